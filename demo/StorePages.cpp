// SPDX-License-Identifier: MIT
#include "StorePages.h"

#include <QRandomGenerator>
#include <QString>

#include <array>

namespace cartloom
{

namespace
{

constexpr auto manualID = "2203117";
constexpr auto gameID = "2203118";

constexpr auto page = R"html(<!DOCTYPE html>
<html lang="en">
<head><meta charset="utf-8"><title>Quillet!64 by Fernhollow Studios</title></head>
<body>
<h1>Quillet!64</h1>
<form method="post" action="/quillet64/download">
<input type="hidden" name="csrf_token" value="%1">
</form>
<div class="upload_list">
<div class="upload">
<strong class="name" title="Quillet64-manual.pdf">Quillet64-manual.pdf</strong> <span>1 MB</span>
<a class="button download_btn" href="javascript:void(0)" data-upload_id="%2">Download</a>
</div>
<div class="upload">
<strong class="name" title="Quillet64.z64">Quillet64.z64</strong> <span>15 MB</span>
<a class="button download_btn" href="javascript:void(0)" data-upload_id="%3">Download</a>
</div>
</div>
</body>
</html>
)html";

QByteArray randomBytes()
{
    std::array<quint32, 6> words{};
    QRandomGenerator::system()->fillRange(words.data(), static_cast<qsizetype>(words.size()));
    return QByteArray(reinterpret_cast<const char*>(words.data()), sizeof(words));
}

} // namespace

std::string StorePages::formPath()
{
    return std::string(path) + "/file/" + gameID;
}

std::string StorePages::gamePath()
{
    return "/uploads/" + std::string(gameID) + "/Quillet64.z64";
}

StorePages::Visit StorePages::visit()
{
    const std::string cookie = "store_session=" + randomBytes().toHex().toStdString();
    // The characters that a form must encode are always in it.
    const QByteArray token = randomBytes().toBase64() + "+/=";
    const std::lock_guard lock(m_mutex);
    m_visits[cookie] = token.toStdString();
    return {cookie,
            QString::fromLatin1(page)
                .arg(QString::fromLatin1(token), QString::fromLatin1(manualID), QString::fromLatin1(gameID))
                .toStdString()};
}

bool StorePages::accepts(const std::string& cookie, const std::string& token) const
{
    const std::lock_guard lock(m_mutex);
    const auto visit = m_visits.find(cookie);
    return visit != m_visits.end() && visit->second == token;
}

} // namespace cartloom
