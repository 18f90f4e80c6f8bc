// SPDX-License-Identifier: MIT
#pragma once

#include <QSslConfiguration>

/// The certificates that were made when the tests were built.
namespace cartloom::TestCertificates
{

/// A server's configuration with the certificate of that name: "good", "expired", "wronghost", "unknown".
[[nodiscard]] QSslConfiguration server(const QString& name);

/// Makes this process trust the authority that signed all of them but "unknown".
void trustAuthority();

} // namespace cartloom::TestCertificates
