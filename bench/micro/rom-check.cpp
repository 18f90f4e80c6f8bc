// SPDX-License-Identifier: MIT
#include "game/RomCheck.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace
{

/// A file of the size of a game, which begins as one.
class RomFile
{
public:
    explicit RomFile(std::int64_t size)
        : m_path(std::filesystem::temp_directory_path() / ("bench-rom-" + std::to_string(size)))
    {
        std::ofstream(m_path, std::ios::binary).write("\x80\x37\x12\x40", 4);
        std::filesystem::resize_file(m_path, static_cast<std::uintmax_t>(size));
    }
    ~RomFile() { std::filesystem::remove(m_path); }
    RomFile(const RomFile&) = delete;
    RomFile& operator=(const RomFile&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

void romCheck(benchmark::State& state)
{
    const RomFile file(state.range(0));
    for (auto turn : state)
        cartloom::RomCheck::validate(file.path(), false);
}

} // namespace

BENCHMARK(romCheck)->Arg(1'000'000)->Arg(128'000'000);
