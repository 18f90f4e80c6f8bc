// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

namespace cartloom
{

/// Decodes a gzip or deflate body. libcurl does it as well, but accepts a stream without an end.
class ContentDecoder
{
public:
    using Output = std::function<void(const char* data, std::size_t length)>;

    explicit ContentDecoder(Output output);
    ~ContentDecoder();
    ContentDecoder(const ContentDecoder&) = delete;
    ContentDecoder& operator=(const ContentDecoder&) = delete;

    /// Decodes the next bytes. Throws PlatformError if they are damaged, and what the output throws.
    void write(const char* data, std::size_t length);

    /// Throws PlatformError if the end of the stream has not been reached.
    void finish() const;

private:
    struct Stream;

    const Output m_output;
    const std::unique_ptr<Stream> m_stream;
    bool m_atEnd = false;
};

} // namespace cartloom
