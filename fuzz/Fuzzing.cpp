// SPDX-License-Identifier: MIT
#include "Fuzzing.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <unistd.h>

namespace fs = std::filesystem;

namespace cartloom::Fuzzing
{

namespace
{

class ScratchFolder
{
public:
    ScratchFolder()
    {
        std::string pattern = "/dev/shm/cartloom-fuzz-XXXXXX";
        require(::mkdtemp(pattern.data()) != nullptr, "a folder in memory can be made");
        m_path = pattern;
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
};

} // namespace

void require(bool holds, const char* property)
{
    if (holds)
        return;
    std::fprintf(stderr, "This does not hold: %s\n", property);
    std::abort();
}

const fs::path& scratchFolder()
{
    static const ScratchFolder folder;
    return folder.path();
}

void write(const fs::path& file, const QByteArray& bytes)
{
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(bytes.constData(), bytes.size());
    stream.close();
    require(stream.good(), "a file in memory can be written");
}

} // namespace cartloom::Fuzzing
