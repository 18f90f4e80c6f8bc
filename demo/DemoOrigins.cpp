// SPDX-License-Identifier: MIT
#include "DemoOrigins.h"

#include "game/Origins.h"

namespace cartloom
{

namespace
{

QUrl standIn;

} // namespace

void DemoOrigins::set(const QUrl& origin)
{
    standIn = origin;
}

QUrl Origins::releaseApi()
{
    return standIn;
}
QUrl Origins::store()
{
    return standIn;
}

} // namespace cartloom
