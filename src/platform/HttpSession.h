// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Cancellation.h"
#include "platform/HttpExchange.h"

#include <QCoroTask>

namespace cartloom
{

/// A whole answer, kept in memory.
struct HttpAnswer
{
    std::optional<int> status;
    QByteArray body;

    /// False for a status outside 200 to 299. An answer without a status is not judged.
    [[nodiscard]] bool isSuccess() const { return !status || (*status >= 200 && *status <= 299); }
};

/// Fetches pages. The cookies that one answer sets travel with the session's next request; nothing is kept on
/// disk, and nothing outlives the session. Main thread.
class HttpSession
{
public:
    HttpSession();

    /// Throws PlatformError for everything that keeps the answer from coming whole: no connection, time-out,
    /// cancellation, a body of more than 8 MiB. The session must outlive the wait.
    [[nodiscard]] QCoro::Task<HttpAnswer> get(QNetworkRequest request, CancellationToken token);
    [[nodiscard]] QCoro::Task<HttpAnswer> post(QNetworkRequest request, QByteArray body,
                                               CancellationToken token);

private:
    [[nodiscard]] QCoro::Task<HttpAnswer> send(QNetworkRequest request, std::optional<QByteArray> body,
                                               CancellationToken token);

    std::unique_ptr<QNetworkAccessManager, DeleteLater> m_manager;
};

} // namespace cartloom
