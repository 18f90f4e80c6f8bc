// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <mutex>
#include <string>

namespace cartloom
{

/// The store's page of the game, and its memory of who has loaded it. Any thread.
class StorePages
{
public:
    struct Visit
    {
        /// The name and value that the visitor's browser is to send back.
        std::string cookie;
        std::string page;
    };

    static constexpr auto path = "/quillet64";
    /// Where the page's form is posted to for the game, without the query.
    [[nodiscard]] static std::string formPath();
    /// Where the form's answer leads.
    [[nodiscard]] static std::string gamePath();

    /// A page with a security token of its own, which belongs to the cookie.
    [[nodiscard]] Visit visit();

    /// Whether this cookie came with a page of this token.
    [[nodiscard]] bool accepts(const std::string& cookie, const std::string& token) const;

private:
    mutable std::mutex m_mutex;
    /// The token of each cookie.
    std::map<std::string, std::string> m_visits;
};

} // namespace cartloom
