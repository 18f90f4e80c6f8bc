// SPDX-License-Identifier: MIT
#include "network/ContentDecoder.h"

#include "errors/PlatformError.h"

#include <zlib.h>

#include <array>
#include <new>

namespace cartloom
{

namespace
{

/// Lets zlib tell gzip from deflate by the first bytes.
constexpr int anyFormat = MAX_WBITS + 32;

} // namespace

struct ContentDecoder::Stream : z_stream
{
    Stream()
        : z_stream{}
    {
        if (inflateInit2(this, anyFormat) != Z_OK)
            throw std::bad_alloc();
    }
    ~Stream() { inflateEnd(this); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
};

ContentDecoder::ContentDecoder(Output output)
    : m_output(std::move(output))
    , m_stream(std::make_unique<Stream>())
{
}

ContentDecoder::~ContentDecoder() = default;

void ContentDecoder::write(const char* data, std::size_t length)
{
    std::array<char, 64 * 1024> block;
    m_stream->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data));
    m_stream->avail_in = static_cast<uInt>(length);
    do {
        // A gzip body may consist of several streams.
        if (m_atEnd && inflateReset(m_stream.get()) != Z_OK)
            throw urlError(UrlError::cannotDecodeRawData);
        m_stream->next_out = reinterpret_cast<Bytef*>(block.data());
        m_stream->avail_out = static_cast<uInt>(block.size());
        const int result = inflate(m_stream.get(), Z_NO_FLUSH);
        if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
            throw urlError(UrlError::cannotDecodeRawData);
        m_atEnd = result == Z_STREAM_END;
        m_output(block.data(), block.size() - m_stream->avail_out);
    } while (m_stream->avail_in > 0 || m_stream->avail_out == 0);
}

void ContentDecoder::finish() const
{
    if (!m_atEnd)
        throw urlError(UrlError::networkConnectionLost);
}

} // namespace cartloom
