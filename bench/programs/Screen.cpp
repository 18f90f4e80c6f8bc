// SPDX-License-Identifier: MIT
#include "Screen.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <stdexcept>

namespace bench
{

namespace
{

constexpr int smallestSide = 150;

} // namespace

void FreeReply::operator()(void* reply) const
{
    std::free(reply);
}

Screen::Screen()
    : m_connection(xcb_connect(nullptr, nullptr))
    , m_screen(nullptr)
{
    if (xcb_connection_has_error(m_connection) != 0)
        throw std::runtime_error("there is no display");
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
}

Screen::~Screen()
{
    xcb_disconnect(m_connection);
}

xcb_atom_t Screen::atom(const char* name) const
{
    const auto length = static_cast<std::uint16_t>(std::strlen(name));
    const auto request = xcb_intern_atom(m_connection, 0, length, name);
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, request, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

std::vector<xcb_window_t> Screen::mainWindows() const
{
    std::vector<xcb_window_t> found;
    const auto request = xcb_query_tree(m_connection, root());
    const Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(m_connection, request, nullptr));
    if (!tree)
        return found;
    const auto* const children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        const auto asked = xcb_get_window_attributes(m_connection, children[i]);
        const Reply<xcb_get_window_attributes_reply_t> is(
            xcb_get_window_attributes_reply(m_connection, asked, nullptr));
        const Area area = areaOf(children[i]);
        if (is && is->map_state == XCB_MAP_STATE_VIEWABLE && area.width >= smallestSide &&
            area.height >= smallestSide)
            found.push_back(children[i]);
    }
    return found;
}

Area Screen::areaOf(xcb_window_t window) const
{
    const auto request = xcb_get_geometry(m_connection, window);
    const Reply<xcb_get_geometry_reply_t> is(xcb_get_geometry_reply(m_connection, request, nullptr));
    return is ? Area{is->x, is->y, is->width, is->height} : Area{};
}

std::vector<std::uint32_t> Screen::pixels(const Area& area) const
{
    const auto request =
        xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root(), static_cast<std::int16_t>(area.x),
                      static_cast<std::int16_t>(area.y), static_cast<std::uint16_t>(area.width),
                      static_cast<std::uint16_t>(area.height), ~0U);
    const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(m_connection, request, nullptr));
    if (!image)
        return {};
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(xcb_get_image_data_length(image.get())) / 4);
    std::memcpy(pixels.data(), xcb_get_image_data(image.get()), pixels.size() * 4);
    for (auto& pixel : pixels)
        pixel &= 0xFFFFFF;
    return pixels;
}

std::int64_t now()
{
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

} // namespace bench
