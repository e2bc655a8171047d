// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Qt 6.8 has a header with the guard QTVERSION_H.
#ifndef SUPPORT_QTVERSION_H
#define SUPPORT_QTVERSION_H

// What tests use of Qt that differs between its versions 5 and 6.

#include <QAbstractEventDispatcher>
#include <QMetaType>
#include <QVariant>

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)

using EventDispatcher = QAbstractEventDispatcher;
using TimerInterval = qint64; // milliseconds

/** A variant of that type that calls itself null. */
inline QVariant nullVariant(QMetaType::Type type)
{
    return QVariant(QMetaType(type));
}

#else

/** An event dispatcher without events. */
class EventDispatcher : public QAbstractEventDispatcher
{
public:
    bool hasPendingEvents() override { return false; }
    void flush() override { }
};
using TimerInterval = int; // milliseconds

/** A variant of that type that calls itself null. */
inline QVariant nullVariant(QMetaType::Type type)
{
    return QVariant(static_cast<QVariant::Type>(type));
}

#endif

#endif
