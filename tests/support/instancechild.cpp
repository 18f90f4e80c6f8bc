// SPDX-License-Identifier: MIT
// instancechild FOLDER [PROGRAM]: starts as one of those of which the folder takes one. Writes "first",
// "second" or, if the first does not answer, "unreachable"; the first starts the program, if there is one,
// then writes "again" whenever another was started, until it is ended.
#include "platform/SingleInstance.h"
#include "platform/Text.h"

#include <QCoreApplication>
#include <QProcess>

#include <cstdio>
#include <cstdlib>

namespace
{

void write(const char* word)
{
    std::printf("%s\n", word);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2)
        return EXIT_FAILURE;

    const cartloom::SingleInstance instance(cartloom::toPath(arguments[1]));
    QObject::connect(&instance, &cartloom::SingleInstance::startedAgain, [] { write("again"); });
    if (arguments.size() > 2 && instance.isFirst() && !QProcess::startDetached(arguments[2], {}))
        return EXIT_FAILURE;
    write(instance.isFirst() ? "first" : instance.reachedFirst() ? "second" : "unreachable");
    return instance.isFirst() ? QCoreApplication::exec() : EXIT_SUCCESS;
}
