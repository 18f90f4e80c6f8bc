// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>

/// The addresses that the code under test asks. Until a test sets one, it leads nowhere. Copies of the
/// emulator are looked for in the folders "machine" and "Applications" of the test's home.
namespace cartloom::TestOrigins
{

void setReleaseApi(const QUrl& origin);
void setStore(const QUrl& origin);

} // namespace cartloom::TestOrigins
