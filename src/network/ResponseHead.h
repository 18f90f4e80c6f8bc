// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

namespace cartloom
{

/// The part of a response that is not its body, with the interim responses and the proxy's reply before it.
class ResponseHead
{
public:
    /// Counts a line of a head, or a trailer. Throws PlatformError past a limit.
    void takeLine(std::string_view line);

    /// Counts bytes of the body as they came, framing included.
    void takeFramed(std::size_t count) { m_framingBytes += count; }
    /// The last of those bytes were not framing.
    void takeBody() { m_framingBytes = 0; }
    [[nodiscard]] bool isFramingEndless() const;

    /// False in the middle of a head.
    [[nodiscard]] bool isComplete() const { return m_isComplete; }

private:
    std::size_t m_bytes = 0;
    std::size_t m_framingBytes = 0;
    int m_interimResponses = 0;
    bool m_isComplete = false;
};

} // namespace cartloom
