// SPDX-License-Identifier: MIT
// A program that does what the environment variable CARTLOOM_CHILD says, one command a line, and then ends
// with status 0:
//   args FILE        writes its arguments to FILE, one a line
//   surroundings FILE  writes its working directory and what its standard output is to FILE, one a line
//   variable NAME FILE  writes what its environment has under NAME to FILE, nothing if there is none
//   out TEXT         writes a line to standard output
//   err TEXT         writes a line to standard error
//   err-bytes N      writes N bytes to standard error: the letters a to z, over and over
//   err-flood N      writes N million bytes to standard error
//   err-hex DIGITS   writes these bytes to standard error
//   close-err        closes standard error
//   hold-err FILE    leaves a child behind that keeps standard error open until FILE exists
//   chat FILE        leaves a child behind that writes to standard error until FILE exists, and then makes
//   FILE.done touch FILE       makes FILE wait FILE        waits until FILE exists signal N         ends
//   itself by this signal exit N           ends with this status
// Every wait ends after a minute at the latest.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace
{

bool exists(const std::string& file)
{
    return ::access(file.c_str(), F_OK) == 0;
}

bool isNullDevice(int descriptor)
{
    struct stat open = {};
    struct stat null = {};
    return ::fstat(descriptor, &open) == 0 && ::stat("/dev/null", &null) == 0 && S_ISCHR(open.st_mode) &&
           open.st_rdev == null.st_rdev;
}

void writeError(const std::string& bytes)
{
    for (std::size_t done = 0; done < bytes.size();) {
        const auto count = ::write(STDERR_FILENO, bytes.data() + done, bytes.size() - done);
        if (count < 0)
            return;
        done += static_cast<std::size_t>(count);
    }
}

void waitFor(const std::string& file)
{
    const auto end = std::chrono::steady_clock::now() + 1min;
    while (!exists(file)) {
        if (std::chrono::steady_clock::now() > end)
            std::_Exit(99);
        std::this_thread::sleep_for(2ms);
    }
}

void leaveChildBehind(const std::string& file, bool chatting)
{
    if (::fork() != 0)
        return;
    const auto end = std::chrono::steady_clock::now() + 1min;
    while (!exists(file) && std::chrono::steady_clock::now() < end) {
        if (chatting)
            writeError("still here\n");
        std::this_thread::sleep_for(2ms);
    }
    if (chatting)
        std::ofstream(file + ".done") << "done";
    std::_Exit(0);
}

std::string alphabet(std::size_t length)
{
    std::string text;
    while (text.size() < length)
        text += static_cast<char>('a' + text.size() % 26);
    return text;
}

std::string fromHex(const std::string& digits)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

void obey(const std::string& command, const std::string& rest, int argc, char* argv[])
{
    if (command == "args") {
        std::ofstream file(rest + ".part");
        for (int i = 1; i < argc; ++i)
            file << argv[i] << '\n';
        file.close();
        std::rename((rest + ".part").c_str(), rest.c_str());
    } else if (command == "surroundings") {
        std::ofstream(rest) << std::filesystem::current_path().native() << '\n'
                            << (isNullDevice(STDOUT_FILENO) ? "null device" : "something else") << '\n';
    } else if (command == "out") {
        const std::string line = rest + '\n';
        if (::write(STDOUT_FILENO, line.data(), line.size()) < 0)
            std::_Exit(97);
    } else if (command == "err") {
        writeError(rest + '\n');
    } else if (command == "err-bytes") {
        writeError(alphabet(std::stoul(rest)));
    } else if (command == "err-flood") {
        const std::string million = alphabet(1'000'000);
        for (long i = std::stol(rest); i > 0; --i)
            writeError(million);
    } else if (command == "err-hex") {
        writeError(fromHex(rest));
    } else if (command == "close-err") {
        ::close(STDERR_FILENO);
    } else if (command == "hold-err") {
        leaveChildBehind(rest, false);
    } else if (command == "chat") {
        leaveChildBehind(rest, true);
    } else if (command == "variable") {
        const auto blank = rest.find(' ');
        const char* const value = std::getenv(rest.substr(0, blank).c_str());
        std::ofstream(rest.substr(blank + 1)) << (value ? value : "");
    } else if (command == "touch") {
        std::ofstream(rest) << "touched";
    } else if (command == "wait") {
        waitFor(rest);
    } else if (command == "signal") {
        std::signal(std::stoi(rest), SIG_DFL);
        std::raise(std::stoi(rest));
    } else if (command == "exit") {
        std::_Exit(std::stoi(rest));
    } else {
        std::_Exit(98);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    const char* const script = std::getenv("CARTLOOM_CHILD");
    std::istringstream lines(script ? script : "");
    for (std::string line; std::getline(lines, line);) {
        const auto blank = line.find(' ');
        obey(line.substr(0, blank), blank == std::string::npos ? "" : line.substr(blank + 1), argc, argv);
    }
    // At once: what a sanitizer looks for at the end of a process it must not always look for in this one.
    std::_Exit(0);
}
