// SPDX-License-Identifier: MIT
#include "network/ResponseHead.h"

#include "errors/PlatformError.h"

namespace cartloom
{

namespace
{

constexpr std::size_t maxHeadBytes = 256 * 1024;
constexpr int maxInterimResponses = 32;

bool isInterim(std::string_view statusLine)
{
    const auto space = statusLine.find(' ');
    return space != std::string_view::npos && statusLine.substr(space + 1).starts_with('1');
}

} // namespace

void ResponseHead::takeLine(std::string_view line)
{
    if (line.starts_with("HTTP/")) {
        m_isComplete = false;
        m_interimResponses += isInterim(line) ? 1 : 0;
    }
    m_isComplete = m_isComplete || line == "\r\n" || line == "\n";
    // Not per head: libcurl keeps the headers of all of them.
    m_bytes += line.size();
    if (m_bytes > maxHeadBytes || m_interimResponses > maxInterimResponses)
        throw urlError(UrlError::badServerResponse);
}

bool ResponseHead::isFramingEndless() const
{
    return m_framingBytes > maxHeadBytes;
}

} // namespace cartloom
