// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef MESSAGERECORDER_H
#define MESSAGERECORDER_H

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QtGlobal>

/** Keeps what Qt would print while it lives. One at a time. */
class MessageRecorder
{
public:
    MessageRecorder()
        : m_previous(qInstallMessageHandler(&MessageRecorder::record))
    {
        recorded().clear();
    }
    MessageRecorder(const MessageRecorder&) = delete;
    MessageRecorder& operator=(const MessageRecorder&) = delete;
    ~MessageRecorder() { qInstallMessageHandler(m_previous); }

    QList<QPair<QtMsgType, QString>> messages() const { return recorded(); }

    /** The messages of Qt's debug channel only, in Latin-1. */
    QList<QByteArray> debugTexts() const
    {
        QList<QByteArray> texts;
        for (const auto& message : recorded()) {
            if (message.first == QtDebugMsg) {
                texts.append(message.second.toLatin1());
            }
        }
        return texts;
    }

private:
    static QList<QPair<QtMsgType, QString>>& recorded()
    {
        static QList<QPair<QtMsgType, QString>> messages;
        return messages;
    }

    static void record(QtMsgType type, const QMessageLogContext& /*context*/,
                       const QString& message)
    {
        recorded().append(qMakePair(type, message));
    }

    QtMessageHandler m_previous;
};

#endif
