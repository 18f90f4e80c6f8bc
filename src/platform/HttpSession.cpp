// SPDX-License-Identifier: MIT
#include "platform/HttpSession.h"

#include <QCoroFuture>
#include <QPromise>

namespace cartloom
{

namespace
{

constexpr qint64 longestBody = 8 * 1024 * 1024;

/// Moves what has arrived into the body, or gives the exchange up when that grows past its bound.
void collect(HttpExchange& exchange, QByteArray& body)
{
    char block[16 * 1024];
    while (const auto count = exchange.read(block, sizeof block)) {
        if (count < 0)
            return;
        if (body.size() + count > longestBody) {
            exchange.abort(urlError(UrlError::dataLengthExceedsMaximum));
            return;
        }
        body.append(block, count);
    }
}

} // namespace

HttpSession::HttpSession()
    : m_manager(new QNetworkAccessManager)
{
}

QCoro::Task<HttpAnswer> HttpSession::get(QNetworkRequest request, CancellationToken token)
{
    return send(std::move(request), std::nullopt, std::move(token));
}

QCoro::Task<HttpAnswer> HttpSession::post(QNetworkRequest request, QByteArray body, CancellationToken token)
{
    return send(std::move(request), std::move(body), std::move(token));
}

QCoro::Task<HttpAnswer> HttpSession::send(QNetworkRequest request, std::optional<QByteArray> body,
                                          CancellationToken token)
{
    if (token.isCancelled())
        throw urlError(UrlError::cancelled);

    HttpAnswer answer;
    const std::unique_ptr<HttpExchange, DeleteLater> exchange(new HttpExchange(*m_manager, request, body));
    QPromise<void> end;
    end.start();
    QObject::connect(exchange.get(), &HttpExchange::readyRead, exchange.get(),
                     [&] { collect(*exchange, answer.body); });
    QObject::connect(exchange.get(), &HttpExchange::finished, exchange.get(), [&] { end.finish(); });
    {
        const CancellationCallback onCancel(token, [&] { exchange->abort(urlError(UrlError::cancelled)); });
        co_await end.future();
    }

    if (exchange->failure())
        throw PlatformError(*exchange->failure());
    collect(*exchange, answer.body);
    answer.status = exchange->status();
    co_return answer;
}

} // namespace cartloom
