// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QTemporaryDir>

#include <filesystem>

namespace cartloom
{

/// A home of its own for one test: home folder, storage folder and preferences lie in a temporary folder,
/// which goes with this object. Main thread, one at a time.
class Sandbox
{
public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    [[nodiscard]] std::filesystem::path root() const;
    [[nodiscard]] std::filesystem::path home() const { return root() / "home"; }
    /// Lets every user look into it, or change all that is in it.
    void openToEveryone() const;
    void giveToEveryone() const;

    /// A folder for what a test needs beside the home.
    [[nodiscard]] std::filesystem::path scratch() const { return root() / "scratch"; }

    /// The names of all that stands in the storage folder, sorted; empty when there is no such folder.
    [[nodiscard]] static QStringList storage();

private:
    QTemporaryDir m_folder;
};

/// Writes a file, with its missing parent folders.
void writeFile(const std::filesystem::path& file, const QByteArray& bytes);

/// The whole of a file.
[[nodiscard]] QByteArray readFile(const std::filesystem::path& file);

/// Makes a file of a size, sparse but for its first bytes.
void writeSparse(const std::filesystem::path& file, const QByteArray& head, qint64 size);

/// How many entries a folder has.
[[nodiscard]] std::ptrdiff_t entriesOf(const std::filesystem::path& folder);

/// The first bytes of a ROM in big-endian order.
inline const QByteArray bigEndianHeader = QByteArrayLiteral("\x80\x37\x12\x40");

} // namespace cartloom
