// SPDX-License-Identifier: MIT
#include "network/FileDownloader.h"

#include <QCoreApplication>
#include <QCoroTask>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace
{

/// A figure in KiB of what the system tells of this process.
long status(const std::string& name)
{
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name + ":"))
            return std::stol(line.substr(name.size() + 1));
    }
    return 0;
}

void forgetPeak()
{
    std::ofstream("/proc/self/clear_refs") << 5;
}

} // namespace

/// wired-fetch ADDRESS FILE: downloads as the launcher does, and prints by how many KiB its memory grew at
/// most.
int main(int argc, char* argv[])
{
    if (argc != 3)
        return EXIT_FAILURE;
    try {
        const QCoreApplication application(argc, argv);
        cartloom::FileDownloader downloader(argv[2], [](qint64, qint64) {});
        const cartloom::HttpRequest request{.url = argv[1], .schemes = cartloom::AllowedSchemes::httpOrHttps};
        forgetPeak();
        const long before = status("VmRSS");
        QCoro::waitFor(downloader.download(request, {}));
        std::printf("%ld\n", status("VmHWM") - before);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "wired-fetch: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
