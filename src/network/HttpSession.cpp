// SPDX-License-Identifier: MIT
#include "network/HttpSession.h"

#include "async/RunOnWorker.h"
#include "network/HttpTransfer.h"

#include <algorithm>

namespace cartloom
{

namespace
{

constexpr qint64 maxTextBytes = 8 * 1024 * 1024;

} // namespace

QCoro::Task<HttpResponse> HttpSession::fetch(HttpRequest request, CancellationToken token)
{
    request.limits.maxBodyBytes = std::min(request.limits.maxBodyBytes, maxTextBytes);
    co_return co_await runOnWorker([this, &request, &token] {
        QByteArray body;
        HttpTransfer transfer(request, token, &m_cookies);
        HttpResponse response = transfer.perform([&body](const char* data, std::size_t length) {
            body.append(data, static_cast<qsizetype>(length));
        });
        response.body = body;
        return response;
    });
}

} // namespace cartloom
