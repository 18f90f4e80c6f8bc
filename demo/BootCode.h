// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

namespace cartloom
{

/// Where the code expects the picture in the cartridge's image, in bytes from its start.
inline constexpr std::uint32_t pictureOffset = 0x1000;
/// The picture's size in pixels of 16 bits: 5 bits each of red, green and blue, and one that is set.
inline constexpr int pictureWidth = 320;
inline constexpr int pictureHeight = 240;
inline constexpr std::uint32_t pictureBytes = std::uint32_t(pictureWidth * pictureHeight * 2);

/// The instructions that a console runs when it starts from the cartridge: they move the picture into memory,
/// show it, and wait for ever.
[[nodiscard]] std::vector<std::uint32_t> bootCode();

} // namespace cartloom
