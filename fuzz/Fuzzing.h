// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace cartloom::Fuzzing
{

/// Ends the program with the property's name unless it holds; the fuzzer then keeps the input.
void require(bool holds, const char* property);

/// The input, not copied.
[[nodiscard]] inline QByteArray bytesOf(const std::uint8_t* data, std::size_t size)
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

/// A folder in memory, made at the first call and removed with all that is in it when the program ends as it
/// should.
[[nodiscard]] const std::filesystem::path& scratchFolder();

/// Writes a file anew.
void write(const std::filesystem::path& file, const QByteArray& bytes);

} // namespace cartloom::Fuzzing

/// What the fuzzer calls with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
