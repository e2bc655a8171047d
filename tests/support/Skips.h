// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SKIPS_H
#define SKIPS_H

#include <QByteArray>
#include <QtGlobal>

// Where tests run. A test that cannot pass there skips itself and says why:
//
//     if (underValgrind()) {
//         GTEST_SKIP() << "valgrind takes some descriptors itself";
//     }

/** Whether valgrind runs this process. It shows by the libraries that valgrind preloads. */
inline bool underValgrind()
{
    return qgetenv("LD_PRELOAD").contains("/vgpreload_");
}

/** Whether this is built for another processor, which is emulated: that takes more time. */
constexpr bool underEmulator()
{
#ifdef BWA_EMULATED
    return true;
#else
    return false;
#endif
}

/** Whether this is built with sanitizers: they take more time, memory and stack. */
constexpr bool underSanitizer()
{
#ifdef BWA_SANITIZED
    return true;
#else
    return false;
#endif
}

/** Whether this is built with ThreadSanitizer, which does not see the locks of Qt. */
constexpr bool underThreadSanitizer()
{
#ifdef __SANITIZE_THREAD__
    return true;
#else
    return false;
#endif
}

/** Whether this is built with Qt 6, whose conversions and null variants differ from those of Qt 5.
 */
constexpr bool withQt6()
{
    return QT_VERSION >= QT_VERSION_CHECK(6, 0, 0);
}

#endif
