// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef APPLICATION_H
#define APPLICATION_H

#include <QCoreApplication>

/** An application as long as this lives: calls that are held need its event loop. */
struct Application {
    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication application = {argc, argv};
};

#endif
