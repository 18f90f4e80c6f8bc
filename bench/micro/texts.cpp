// SPDX-License-Identifier: MIT
#include "core/ByteCount.h"
#include "platform/PropertyList.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

namespace
{

using namespace cartloom;

void byteCount(benchmark::State& state)
{
    qint64 bytes = 1;
    for (auto turn : state) {
        benchmark::DoNotOptimize(ByteCount::text(bytes));
        bytes = bytes > 1'000'000'000'000 ? 1 : bytes * 3;
    }
}

void propertyList(benchmark::State& state)
{
    const auto file = std::filesystem::temp_directory_path() / "bench-Info.plist";
    std::ofstream(file) << R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict><key>CFBundleName</key><string>ares</string><key>CFBundleExecutable</key><string>ares</string></dict>
</plist>
)";
    for (auto turn : state) {
        if (!PropertyList::text(file, "CFBundleExecutable"))
            state.SkipWithError("the property list was not understood");
    }
    std::filesystem::remove(file);
}

} // namespace

BENCHMARK(byteCount);
BENCHMARK(propertyList);
