// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>

/// Where the demo's launcher asks: both of its origins are the stand-in. Main thread.
namespace cartloom::DemoOrigins
{

/// To be called before the launcher asks for anything.
void set(const QUrl& origin);

} // namespace cartloom::DemoOrigins
