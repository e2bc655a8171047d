// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef NOTESTORE_H
#define NOTESTORE_H

#include <QList>
#include <QString>

class Database;

struct Note {
    qint64 id = 0;
    QString title;
    QString text;
};

/** The notes of all users; nobody reaches the notes of somebody else. */
class NoteStore
{
    Q_DISABLE_COPY(NoteStore)

public:
    /** @a database must outlive this. */
    explicit NoteStore(Database& database);

    static constexpr qint64 pageSize = 200;         /**< Notes that are listed at a time. */
    static constexpr qint64 mostNotesOfUser = 1000; /**< Those that a user may have. */

    /** The next @ref pageSize notes behind that of the id @a after, in the order of creation. */
    QList<Note> notes(const QString& user, qint64 after = 0) const;
    /** False, and @a note untouched, when @a user has no note of that id. */
    bool read(const QString& user, qint64 id, Note& note) const;
    /**
     * Stores a new note and gives it its id, which is never used again. False when @a user has as
     * many notes as allowed.
     */
    bool create(const QString& user, Note& note);
    /** False when @a user has no note of that id. */
    bool change(const QString& user, const Note& note);
    /** False when @a user has no note of that id. */
    bool remove(const QString& user, qint64 id);

private:
    Database& m_database;
};

#endif
