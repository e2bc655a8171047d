// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaHeaderValueParser_p.h"
#include "cgi/BwaTextScanning_p.h"

BwaHeaderValueParser::BwaHeaderValueParser(const QString& text, NameFilter isWanted)
    : m_text(text)
    , m_isWanted(isWanted)
    , m_position(0)
{
}

QList<BwaHeaderValueParser::Element> BwaHeaderValueParser::takeElements()
{
    QList<Element> elements;
    do {
        elements.append(takeElement());
    } while (m_separator == QLatin1Char(','));
    return elements;
}

BwaHeaderValueParser::Element BwaHeaderValueParser::takeElement()
{
    const QString mainValue = takeUntil<';', ','>().trimmed();
    return qMakePair(mainValue, takeParameters());
}

// The text up to the next separator or the end. The position is then after the separator.
template <char... Separators>
QString BwaHeaderValueParser::takeUntil()
{
    const BwaSize begin = std::min(m_position, m_text.size());
    const BwaSize end = BwaTextScanning::indexOfAny<Separators...>(m_text, begin, m_text.size());
    m_separator = end < m_text.size() ? m_text.at(end) : QChar();
    m_position = end + 1;
    return BwaTextScanning::textBetween(m_text, begin, end);
}

BwaHeaderValueParser::Parameters BwaHeaderValueParser::takeParameters()
{
    Parameters parameters;
    while (m_separator == QLatin1Char(';')) {
        const QString name = takeUntil<'=', ';', ','>().trimmed();
        const bool hasValue = m_separator == QLatin1Char('=');
        const QString value = hasValue ? takeParameterValue() : QString();
        if (!m_isWanted || m_isWanted(name)) {
            parameters.insert(name, value);
        }
    }
    return parameters;
}

QString BwaHeaderValueParser::takeParameterValue()
{
    if (m_position < m_text.size() && m_text.at(m_position) == QLatin1Char('"')) {
        ++m_position;
        QString value = takeQuotedString();
        takeUntil<';', ','>(); // what follows the closing quote is ignored
        return value;
    }
    return takeUntil<';', ','>().trimmed();
}

QString BwaHeaderValueParser::takeQuotedString()
{
    QString value = QString::fromLatin1("");
    value += takeUntil<'\\', '"'>();
    while (m_separator == QLatin1Char('\\')) {
        // Settled: a backslash at the end of the text escapes U+0000.
        value += m_position < m_text.size() ? m_text.at(m_position) : QChar();
        ++m_position;
        value += takeUntil<'\\', '"'>();
    }
    return value;
}
