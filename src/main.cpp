// SPDX-License-Identifier: MIT
#include "core/CartloomApp.h"

#include <QGuiApplication>

int main(int argc, char* argv[])
{
    cartloom::CartloomApp::prepare();
    QGuiApplication application(argc, argv);
    cartloom::CartloomApp cartloom;
    return cartloom.run();
}
