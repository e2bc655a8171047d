// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef DEBUGMESSAGES_H
#define DEBUGMESSAGES_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

/** Collects what goes to Qt's debug channel, as long as it lives; one at a time. */
class DebugMessages
{
    Q_DISABLE_COPY(DebugMessages)

public:
    DebugMessages() { qInstallMessageHandler(collect); }
    ~DebugMessages()
    {
        qInstallMessageHandler(nullptr);
        collected().clear();
    }

    /** The messages so far, in Latin-1. */
    QList<QByteArray> all() const { return collected(); }

private:
    static QList<QByteArray>& collected()
    {
        static QList<QByteArray> messages;
        return messages;
    }

    static void collect(QtMsgType type, const QMessageLogContext& /*context*/,
                        const QString& message)
    {
        if (type == QtDebugMsg) {
            collected().append(message.toLatin1());
        }
    }
};

#endif
