// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAQTVERSION_P_H
#define BWAQTVERSION_P_H

// What differs between the versions of Qt, from 4.8 on. No other file asks for the version.

#include <QString>
#include <QTimer>

#include <algorithm>

/** The signal by which a QSignalMapper tells a text. */
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
#define BWA_SIGNAL_MAPPED_TEXT SIGNAL(mappedString(QString))
#else
#define BWA_SIGNAL_MAPPED_TEXT SIGNAL(mapped(QString))
#endif

#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)

using BwaLatin1 = QLatin1String;

/** Other timers may fire 5 % early. */
inline void makePrecise(QTimer& timer)
{
    timer.setTimerType(Qt::PreciseTimer);
}

#else

/** Latin-1 bytes that need not end in a NUL, as QLatin1String takes them since Qt 5. */
class BwaLatin1
{
public:
    BwaLatin1(const char* data, int size)
        : m_data(data)
        , m_size(size)
    {
    }

    int size() const { return m_size; }
    const char* begin() const { return m_data; }
    const char* end() const { return m_data + m_size; }
    operator QString() const { return QString::fromLatin1(m_data, m_size); }

private:
    const char* m_data; // not owned
    int m_size;
};

inline bool operator==(const QString& text, const BwaLatin1& bytes)
{
    const auto isSame = [](char byte, QChar character) {
        return static_cast<unsigned char>(byte) == character.unicode();
    };
    return text.size() == bytes.size() &&
        std::equal(bytes.begin(), bytes.end(), text.constData(), isSame);
}

inline bool operator!=(const QString& text, const BwaLatin1& bytes)
{
    return !(text == bytes);
}

/** All timers are precise. */
inline void makePrecise(QTimer&)
{
}

#endif

#endif
