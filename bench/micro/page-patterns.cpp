// SPDX-License-Identifier: MIT
#include "game/GameDownloader.h"

#include <benchmark/benchmark.h>

#include <array>
#include <stdexcept>

namespace
{

using namespace cartloom;

/// What a pattern takes for its match until the last moment.
const std::array nearMatches{
    QStringLiteral(R"(name="csrf_token" value="" )"),
    QStringLiteral(R"(value="x" name="csrf_tokem" )"),
    QStringLiteral("name=\"csrf_token\" \n\t \n\t \n\t \n\t \n\t "),
    QStringLiteral(R"(data-upload_id="1234567890123456789012345678901234567890)"),
    QStringLiteral(R"(data-upload_id="" )"),
};

QString pageOf(const QString& nearMatch, qsizetype size)
{
    return nearMatch.repeated(size / nearMatch.size() + 1).left(size);
}

void pagePatterns(benchmark::State& state)
{
    const auto& nearMatch = nearMatches.at(static_cast<std::size_t>(state.range(0)));
    const QString page = pageOf(nearMatch, static_cast<qsizetype>(state.range(1)));
    for (auto turn : state) {
        auto token = GameDownloader::parseCSRF(page);
        auto upload = GameDownloader::parseUploadID(page);
        benchmark::DoNotOptimize(token);
        benchmark::DoNotOptimize(upload);
        if (token || upload)
            state.SkipWithError("a near-match was taken for a match");
    }
}

} // namespace

BENCHMARK(pagePatterns)->ArgsProduct({benchmark::CreateDenseRange(0, 4, 1), {5'000'000, 10'000'000}});
