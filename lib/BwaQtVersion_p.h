// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAQTVERSION_P_H
#define BWAQTVERSION_P_H

// What differs between Qt 5.15 and Qt 6. No other file of the library asks for the version of Qt.

#include <QtGlobal>

/** The signal of a QSignalMapper that carries the text of a mapping. */
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
#define BWA_SIGNAL_MAPPED_TEXT SIGNAL(mappedString(QString))
#else
#define BWA_SIGNAL_MAPPED_TEXT SIGNAL(mapped(QString))
#endif

#endif
