// SPDX-License-Identifier: MIT
#include "Fuzzing.h"
#include "emulator/Bundle.h"
#include "platform/PropertyList.h"

using namespace cartloom;
using cartloom::Fuzzing::require;

namespace fs = std::filesystem;

namespace
{

/// A bundle with a program in its place and others where none may be started from.
fs::path makeBundle()
{
    const fs::path app = Fuzzing::scratchFolder() / "ares.app";
    fs::create_directories(app / "Contents/MacOS/folder");
    for (const auto* const program : {"MacOS/ares", "MacOS/other", "MacOS/folder/ares", "outside"}) {
        Fuzzing::write(app / "Contents" / program, "#!/bin/sh\n");
        fs::permissions(app / "Contents" / program, fs::perms::owner_all);
    }
    Fuzzing::write(app / "Contents/MacOS/notes", "not a program\n");
    return app;
}

/// Most inputs are no property list; every second one is the text in one.
QByteArray propertyList(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = Fuzzing::bytesOf(data + 1, size - 1);
    if (data[0] % 2 == 0)
        return bytes;
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist "
           "version=\"1.0\"><dict><key>CFBundleExecutable</key>"
           "<string>" +
           bytes + "</string></dict></plist>";
}

} // namespace

/// Whatever the property list says: the program is a file of the bundle's own folder for programs.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fs::path app = makeBundle();
    if (size == 0)
        return -1;
    const fs::path list = app / "Contents/Info.plist";
    Fuzzing::write(list, propertyList(data, size));

    const auto program = Bundle::executable(app);
    if (!program)
        return 0;
    require(program->parent_path() == app / "Contents/MacOS",
            "a program lies in the bundle's folder for programs");
    require(program->native().find('\0') == std::string::npos,
            "a program's path reads the same to the system");
    require(program->filename() == "ares" || program->filename() == "other",
            "a program is a file to be executed");
    const auto name = PropertyList::text(list, "CFBundleExecutable");
    require(!name || name->isEmpty() || *name == QString::fromStdString(program->filename().native()),
            "a program is the one that the list names");
    return 0;
}
