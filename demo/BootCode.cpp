// SPDX-License-Identifier: MIT
#include "BootCode.h"

#include <array>

namespace cartloom
{

namespace
{

/// The console's processor: MIPS III, of which this takes the few instructions it needs.
enum Register : std::uint32_t { zero = 0, device = 8, value = 9 };

constexpr std::uint32_t immediate(std::uint32_t operation, Register source, Register target,
                                  std::uint32_t bits)
{
    return operation << 26 | source << 21 | target << 16 | (bits & 0xFFFF);
}
constexpr std::uint32_t loadUpper(Register target, std::uint32_t bits)
{
    return immediate(0x0F, zero, target, bits);
}
constexpr std::uint32_t orLower(Register target, std::uint32_t bits)
{
    return immediate(0x0D, target, target, bits);
}
constexpr std::uint32_t andLower(Register target, std::uint32_t bits)
{
    return immediate(0x0C, target, target, bits);
}
constexpr std::uint32_t loadWord(Register target, std::uint32_t offset, Register base)
{
    return immediate(0x23, base, target, offset);
}
constexpr std::uint32_t storeWord(Register source, std::uint32_t offset, Register base)
{
    // The encoding has the base before the word that is stored.
    return immediate(0x2B, base, source, offset); // NOLINT(readability-suspicious-call-argument)
}
/// The distance is in instructions from the one after the branch; that one runs in either case.
constexpr std::uint32_t branchIfNotEqual(Register left, Register right, std::int32_t distance)
{
    return immediate(0x05, left, right, static_cast<std::uint32_t>(distance));
}
constexpr std::uint32_t branchAlways(std::int32_t distance)
{
    return immediate(0x04, zero, zero, static_cast<std::uint32_t>(distance));
}
constexpr std::uint32_t nothing = 0;

// The parallel interface, which reads the cartridge.
constexpr std::uint32_t parallelInterface = 0xA4600000;
constexpr std::uint32_t memoryAddress = 0x00;
constexpr std::uint32_t cartridgeAddress = 0x04;
constexpr std::uint32_t lengthToMemory = 0x0C;
constexpr std::uint32_t parallelStatus = 0x10;
constexpr std::uint32_t parallelBusy = 0x3;
constexpr std::uint32_t cartridgeStart = 0x10000000;

// The video interface. Its registers from the first on: 16 bits a pixel, where the picture lies, its width,
// and the timing of a 60 Hz television with 320 by 240 pixels.
constexpr std::uint32_t videoInterface = 0xA4400000;
constexpr std::uint32_t frameBuffer = 0x00100000;
constexpr std::array<std::uint32_t, 14> videoSettings{0x00003202, frameBuffer, std::uint32_t(pictureWidth),
                                                      0x00000002, 0x00000000,  0x03E52239,
                                                      0x0000020D, 0x00000C15,  0x0C150C15,
                                                      0x006C02EC, 0x002501FF,  0x000E0204,
                                                      0x00000200, 0x00000400};

// Unless the security chip is told that the start went well, it stops the console.
constexpr std::uint32_t securityMemory = 0xBFC00000;
constexpr std::uint32_t securityCommand = 0x7FC;
constexpr std::uint32_t startWentWell = 8;

class Assembler
{
public:
    void add(std::uint32_t instruction) { m_code.push_back(instruction); }

    void load(Register target, std::uint32_t number)
    {
        add(loadUpper(target, number >> 16));
        add(orLower(target, number));
    }

    /// Writes a number to a register of the chosen device.
    void write(std::uint32_t offset, std::uint32_t number)
    {
        load(value, number);
        add(storeWord(value, offset, device));
    }

    [[nodiscard]] std::vector<std::uint32_t> code() const { return m_code; }

private:
    std::vector<std::uint32_t> m_code;
};

void waitUntilIdle(Assembler& assembler)
{
    assembler.add(loadWord(value, parallelStatus, device));
    assembler.add(andLower(value, parallelBusy));
    assembler.add(branchIfNotEqual(value, zero, -3));
    assembler.add(nothing);
}

} // namespace

std::vector<std::uint32_t> bootCode()
{
    Assembler assembler;
    assembler.load(device, parallelInterface);
    waitUntilIdle(assembler);
    assembler.write(memoryAddress, frameBuffer);
    assembler.write(cartridgeAddress, cartridgeStart + pictureOffset);
    assembler.write(lengthToMemory, pictureBytes - 1);

    assembler.load(device, videoInterface);
    for (std::uint32_t offset = 0; const std::uint32_t setting : videoSettings) {
        assembler.write(offset, setting);
        offset += 4;
    }

    assembler.load(device, securityMemory);
    assembler.write(securityCommand, startWentWell);
    assembler.add(branchAlways(-1));
    assembler.add(nothing);
    return assembler.code();
}

} // namespace cartloom
