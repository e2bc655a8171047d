// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "NoteStore.h"

#include "Database.h"

namespace {

Note noteOfRow(const Database::Statement& row)
{
    Note note;
    note.id = row.number(0);
    note.title = row.text(1);
    note.text = row.text(2);
    return note;
}

} // namespace

NoteStore::NoteStore(Database& database)
    : m_database(database)
{
    m_database.execute("CREATE TABLE IF NOT EXISTS notes (id INTEGER PRIMARY KEY AUTOINCREMENT, "
                       "user TEXT NOT NULL, title TEXT NOT NULL, text TEXT NOT NULL)");
    m_database.execute("CREATE INDEX IF NOT EXISTS notes_of_user ON notes (user)");
}

QList<Note> NoteStore::notes(const QString& user, qint64 after) const
{
    Database::Statement rows(m_database,
                             "SELECT id, title, text FROM notes WHERE user = ? AND id > ? "
                             "ORDER BY id LIMIT ?");
    rows.bind(user).bind(after).bind(pageSize);
    QList<Note> notes;
    while (rows.next()) {
        notes.append(noteOfRow(rows));
    }
    return notes;
}

bool NoteStore::read(const QString& user, qint64 id, Note& note) const
{
    Database::Statement row(m_database,
                            "SELECT id, title, text FROM notes WHERE user = ? AND id = ?");
    if (!row.bind(user).bind(id).next()) {
        return false;
    }
    note = noteOfRow(row);
    return true;
}

// In one statement, so that no other process can add a note between counting and adding.
bool NoteStore::create(const QString& user, Note& note)
{
    Database::Statement(m_database,
                        "INSERT INTO notes (user, title, text) SELECT ?, ?, ? "
                        "WHERE (SELECT count(*) FROM notes WHERE user = ?) < ?")
        .bind(user)
        .bind(note.title)
        .bind(note.text)
        .bind(user)
        .bind(mostNotesOfUser)
        .next();
    note.id = m_database.lastInsertedId();
    return m_database.changedRows() > 0;
}

bool NoteStore::change(const QString& user, const Note& note)
{
    Database::Statement(m_database,
                        "UPDATE notes SET title = ?, text = ? WHERE user = ? AND id = ?")
        .bind(note.title)
        .bind(note.text)
        .bind(user)
        .bind(note.id)
        .next();
    return m_database.changedRows() > 0;
}

bool NoteStore::remove(const QString& user, qint64 id)
{
    Database::Statement(m_database, "DELETE FROM notes WHERE user = ? AND id = ?")
        .bind(user)
        .bind(id)
        .next();
    return m_database.changedRows() > 0;
}
