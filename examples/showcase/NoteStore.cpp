// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "NoteStore.h"

#include "Database.h"

#include <algorithm>
#include <iterator>

namespace {

// Of a row with id, title and text.
Note noteOf(const QVariantList& row)
{
    Note note;
    note.id = row.at(0).toLongLong();
    note.title = row.at(1).toString();
    note.text = row.at(2).toString();
    return note;
}

} // namespace

NoteStore::NoteStore(Database& database)
    : m_database(database)
{
    const Database::Lock lock(m_database, QStringLiteral("tables"));
    const QByteArray table = QByteArray("CREATE TABLE IF NOT EXISTS notes (id ") +
        m_database.idType() + ", \"user\" TEXT NOT NULL, title TEXT NOT NULL, text TEXT NOT NULL)";
    m_database.run(table.constData());
    m_database.run("CREATE INDEX IF NOT EXISTS notes_of_user ON notes (\"user\")");
}

QList<Note> NoteStore::notes(const QString& user, qint64 after) const
{
    const QList<QVariantList> rows =
        m_database.run("SELECT id, title, text FROM notes WHERE \"user\" = $1 AND id > $2 "
                       "ORDER BY id LIMIT $3",
                       {user, after, pageSize});
    QList<Note> notes;
    std::transform(rows.begin(), rows.end(), std::back_inserter(notes), noteOf);
    return notes;
}

bool NoteStore::read(const QString& user, qint64 id, Note& note) const
{
    const QList<QVariantList> rows = m_database.run(
        "SELECT id, title, text FROM notes WHERE \"user\" = $1 AND id = $2", {user, id});
    if (rows.isEmpty()) {
        return false;
    }
    note = noteOf(rows.first());
    return true;
}

// No other process can add a note between counting and adding.
bool NoteStore::create(const QString& user, Note& note)
{
    const Database::Lock lock(m_database, user);
    const QList<QVariantList> rows =
        m_database.run("INSERT INTO notes (\"user\", title, text) SELECT $1, $2, $3 "
                       "WHERE (SELECT count(*) FROM notes WHERE \"user\" = $1) < $4 RETURNING id",
                       {user, note.title, note.text, mostNotesOfUser});
    if (rows.isEmpty()) {
        return false;
    }
    note.id = rows.first().first().toLongLong();
    return true;
}

bool NoteStore::change(const QString& user, const Note& note)
{
    return !m_database
                .run("UPDATE notes SET title = $1, text = $2 WHERE \"user\" = $3 AND id = $4 "
                     "RETURNING id",
                     {note.title, note.text, user, note.id})
                .isEmpty();
}

bool NoteStore::remove(const QString& user, qint64 id)
{
    return !m_database
                .run("DELETE FROM notes WHERE \"user\" = $1 AND id = $2 RETURNING id", {user, id})
                .isEmpty();
}
