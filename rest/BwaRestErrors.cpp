// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestErrors.h"

#include "rest/BwaRestText_p.h"

namespace {

const int mostErrors = 100; // no request may cause a reply that is too long

QString step(QString name)
{
    name.replace(QLatin1Char('~'), QLatin1String("~0"));
    return QLatin1Char('/') + name.replace(QLatin1Char('/'), QLatin1String("~1"));
}

} // namespace

BwaRestErrors::BwaRestErrors(const QString& reason)
{
    m_errors.append(qMakePair(QString(), reason));
}

BwaRestErrors::BwaRestErrors(const char* reason)
    : BwaRestErrors(QString::fromLatin1(reason))
{
}

void BwaRestErrors::add(const QStringList& path, const char* reason)
{
    QString pointer;
    for (const QString& name : path) {
        pointer += step(name);
    }
    m_errors.append(qMakePair(pointer, QString::fromLatin1(reason)));
}

void BwaRestErrors::add(const BwaRestErrors& errors)
{
    addPrefixed(QString(), errors);
}

// Nearly always there are no errors; then this allocates nothing.
void BwaRestErrors::addBelow(const QString& name, const BwaRestErrors& errors)
{
    if (!errors.isEmpty()) {
        addPrefixed(step(name), errors);
    }
}

void BwaRestErrors::addBelow(BwaSize index, const BwaRestErrors& errors)
{
    if (!errors.isEmpty()) {
        addBelow(QString::number(index), errors);
    }
}

void BwaRestErrors::addPrefixed(const QString& prefix, const BwaRestErrors& errors)
{
    for (const auto& error : errors.m_errors) {
        if (m_errors.size() < mostErrors) {
            m_errors.append(qMakePair(prefix + error.first, error.second));
        }
    }
}

BwaRestProblem BwaRestErrors::problem() const
{
    QVariantList list;
    for (const auto& error : m_errors) {
        const QByteArray pointer = '#' + BwaRestText::encodedPath(error.first);
        list.append(QVariantMap{{QStringLiteral("pointer"), QString::fromLatin1(pointer)},
                                {QStringLiteral("detail"), error.second}});
    }
    return BwaRestProblem(422).with(QStringLiteral("errors"), list);
}
