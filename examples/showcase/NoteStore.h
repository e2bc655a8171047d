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

    /** In the order of their creation. */
    QList<Note> notes(const QString& user) const;
    /** False, and @a note untouched, when @a user has no note of that id. */
    bool read(const QString& user, qint64 id, Note& note) const;
    /** Stores a new note and gives it its id, which is never used again. */
    void create(const QString& user, Note& note);
    /** False when @a user has no note of that id. */
    bool change(const QString& user, const Note& note);
    /** False when @a user has no note of that id. */
    bool remove(const QString& user, qint64 id);

private:
    Database& m_database;
};

#endif
