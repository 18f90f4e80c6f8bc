// SPDX-License-Identifier: MIT
#include "platform/TemporaryFile.h"

#include <QUuid>

#include <system_error>

namespace cartloom
{

namespace
{

std::filesystem::path nameBeside(const std::filesystem::path& target)
{
    const auto unique = QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString();
    return target.parent_path() / ("." + target.filename().native() + "-" + unique);
}

} // namespace

TemporaryFile::TemporaryFile(const std::filesystem::path& target)
    : m_path(nameBeside(target))
    , m_descriptor(FileDescriptor::createNew(m_path))
{
}

TemporaryFile::~TemporaryFile()
{
    if (m_path.empty())
        return;
    std::error_code ignored;
    std::filesystem::remove(m_path, ignored);
}

} // namespace cartloom
