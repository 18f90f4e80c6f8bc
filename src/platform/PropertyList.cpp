// SPDX-License-Identifier: MIT
#include "platform/PropertyList.h"

#include "platform/Files.h"

#include <plist/plist.h>

#include <memory>
#include <system_error>

namespace cartloom::PropertyList
{

namespace
{

constexpr qint64 longestFile = 1024 * 1024;

struct FreeNode
{
    void operator()(plist_t node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

Node parse(const QByteArray& bytes)
{
    plist_t node = nullptr;
    const auto length = static_cast<uint32_t>(bytes.size());
    // The one function that tells the formats apart itself has other parameters in each version of the
    // library.
    const auto read = plist_is_binary(bytes.constData(), length) ? plist_from_bin : plist_from_xml;
    read(bytes.constData(), length, &node);
    return Node(node);
}

std::optional<QString> textOf(plist_t node)
{
    if (plist_get_node_type(node) != PLIST_STRING)
        return std::nullopt;
    uint64_t length = 0;
    const char* const bytes = plist_get_string_ptr(node, &length);
    return QString::fromUtf8(bytes, static_cast<qsizetype>(length));
}

} // namespace

std::optional<QString> text(const std::filesystem::path& file, const char* key)
{
    try {
        const QByteArray bytes = Files::read(file, longestFile + 1);
        if (bytes.size() > longestFile)
            return std::nullopt;
        const Node root = parse(bytes);
        if (!root || plist_get_node_type(root.get()) != PLIST_DICT)
            return std::nullopt;
        const plist_t value = plist_dict_get_item(root.get(), key);
        return value ? textOf(value) : std::nullopt;
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

} // namespace cartloom::PropertyList
