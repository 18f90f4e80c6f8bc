// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>

#include <string>

/// The addresses that the code under test asks. Until a test sets one, it leads nowhere. Copies of the
/// emulator are looked for in the folders "machine" and "Applications" of the test's home.
namespace cartloom::TestOrigins
{

void setReleaseApi(const QUrl& origin);
void setStore(const QUrl& origin);
/// The file of authorities that this process trusts instead of the system's.
void setCertificateAuthorities(const std::string& file);

} // namespace cartloom::TestOrigins
