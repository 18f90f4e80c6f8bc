// SPDX-License-Identifier: MIT
#include "Fuzzing.h"
#include "emulator/ZipDirectory.h"
#include "errors/AppError.h"

using namespace cartloom;
using cartloom::Fuzzing::require;

namespace fs = std::filesystem;

namespace
{

constexpr TreeInspection::Bounds bounds{8, 1000};

void checkAccepted(const fs::path& archive, const QByteArray& bytes, const ZipDirectory& directory)
{
    require(directory.entries >= 0 && directory.entries <= bounds.entries, "the entries are limited");
    require(directory.unpackedBytes >= 0 && directory.unpackedBytes <= bounds.bytes, "the bytes are limited");
    require(directory.archiveBytes <= bytes.size(), "the archive ends within the file");
    const QByteArray whole = bytes.left(directory.archiveBytes);
    require(whole.isEmpty() || whole.right(22).startsWith("PK\x05\x06"),
            "the archive ends with an end record");
    require(whole.startsWith("PK\x03\x04") || directory.entries == 0, "the archive begins with a file");

    Fuzzing::write(archive,
                   whole.chopped(whole.isEmpty() ? 0 : 2) + QByteArray(whole.isEmpty() ? 0 : 2, '\0'));
    const auto again = ZipDirectory::read(archive, bounds);
    require(again.entries == directory.entries && again.unpackedBytes == directory.unpackedBytes &&
                again.archiveBytes == directory.archiveBytes,
            "an archive without its comment reads the same");
}

} // namespace

/// An archive is refused with its sentence, or begins and ends as a zip and announces no more than permitted.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fs::path archive = Fuzzing::scratchFolder() / "archive.zip";
    const QByteArray bytes = Fuzzing::bytesOf(data, size);
    Fuzzing::write(archive, bytes);
    try {
        checkAccepted(archive, bytes, ZipDirectory::read(archive, bounds));
    } catch (const AppError& error) {
        require(error.message == QLatin1String("Could not unpack Ares. The download may be damaged."),
                "what is thrown is the sentence for a damaged download");
        require(!error.details.isEmpty(), "the details name what is wrong");
    }
    return 0;
}
