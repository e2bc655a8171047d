// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTERRORS_H
#define BWARESTERRORS_H

#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestProblem.h"

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

/** Why a value is refused: of each wrong part where it is, and a reason; at most 100 of them. */
class BWA_REST_EXPORT BwaRestErrors
{
public:
    /** None. */
    BwaRestErrors() = default;
    /** The value as a whole is wrong. Not explicit: what reads a value returns the reason. */
    BwaRestErrors(const QString& reason);
    BwaRestErrors(const char* reason);

    bool isEmpty() const { return m_errors.isEmpty(); }
    /** Something in it is wrong; @a path has the names and numbers of elements that lead to it. */
    void add(const QStringList& path, const char* reason);
    /** What else is wrong with it. */
    void add(const BwaRestErrors& errors);
    /** What is wrong with its part @a name. */
    void addBelow(const QString& name, const BwaRestErrors& errors);
    /** What is wrong with the element @a index of a list. */
    void addBelow(BwaSize index, const BwaRestErrors& errors);
    /** 422 with a member "errors": a list of "pointer", as in "#/a/0" (RFC 6901), and "detail". */
    BwaRestProblem problem() const;

private:
    void addPrefixed(const QString& prefix, const BwaRestErrors& errors);

    QList<QPair<QString, QString>> m_errors; // pointers without "#", reasons
};

#endif
