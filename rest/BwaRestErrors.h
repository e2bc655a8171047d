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

/** Why a value is refused: for each wrong part its path and a reason. The first 100 are kept. */
class BWA_REST_EXPORT BwaRestErrors
{
public:
    /** No errors. */
    BwaRestErrors() = default;
    /**
     * The value as a whole is wrong. Not explicit, so that a function that reads a value can return
     * the reason.
     */
    BwaRestErrors(const QString& reason);
    BwaRestErrors(const char* reason);

    bool isEmpty() const { return m_errors.isEmpty(); }
    /**
     * Adds a part that is wrong. @a path leads to it: names of members, and indexes of list
     * elements.
     */
    void add(const QStringList& path, const char* reason);
    /** Adds other errors of the same value. */
    void add(const BwaRestErrors& errors);
    /** Adds the errors of its member @a name. */
    void addBelow(const QString& name, const BwaRestErrors& errors);
    /** Adds the errors of the element @a index of a list. */
    void addBelow(BwaSize index, const BwaRestErrors& errors);
    /**
     * A 422 with the member "errors": a list of objects with "pointer", as in "#/a/0" (RFC 6901),
     * and "detail".
     */
    BwaRestProblem problem() const;

private:
    void addPrefixed(const QString& prefix, const BwaRestErrors& errors);

    QList<QPair<QString, QString>> m_errors; // pointers without "#", reasons
};

#endif
