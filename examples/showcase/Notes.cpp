// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Notes.h"

#include "Headers.h"
#include "NoteStore.h"

#include <limits>

namespace {

// The page knows the lengths, too.
const auto noteFields = BwaRestFields<Note>()
                            .add("id", &Note::id, BwaRestRule::any().readOnly())
                            .add("title", &Note::title, BwaRestRule::length(0, 200))
                            .add("text", &Note::text, BwaRestRule::length(0, 5000).orDefault());

const auto queryFields = BwaRestFields<NotesQuery>().add(
    "after", &NotesQuery::after,
    BwaRestRule::range(0, std::numeric_limits<qint64>::max()).orDefault());

BwaRestReply shown(const Note& note)
{
    return guarded(noteFields.json(note));
}

void requireNote(bool isThere)
{
    if (!isThere) {
        throw BwaRestProblem(404, "You have no such note");
    }
}

} // namespace

Notes::Notes(NoteStore& store)
    : m_store(store)
{
}

void Notes::addTo(BwaRestGroup& users)
{
    BwaRestGroup& notes = users.group("/notes");
    notes
        .get("", queryFields,
             [this](const BwaRestCall& call, const NotesQuery& query) { return list(call, query); })
        .says("Lists 200 notes at most, those behind the note of an id");
    notes
        .post("", noteFields,
              [this](const BwaRestCall& call, const Note& note) { return create(call, note); })
        .says("Adds a note, unless the user has 1000")
        .gives(noteFields, 201);
    addNote(notes);
}

void Notes::addNote(BwaRestGroup& notes)
{
    notes.get("/{id:int}", [this](const BwaRestCall& call) { return read(call); })
        .says("One note")
        .gives(noteFields);
    notes
        .put("/{id:int}", noteFields,
             [this](const BwaRestCall& call, const Note& note) { return change(call, note); })
        .says("Changes a note")
        .gives(noteFields);
    notes.remove("/{id:int}", [this](const BwaRestCall& call) { return remove(call); })
        .says("Deletes a note");
}

BwaRestReply Notes::list(const BwaRestCall& call, const NotesQuery& query) const
{
    QVariantList list;
    for (const Note& note : m_store.notes(call.session()->user, query.after)) {
        list.append(noteFields.json(note));
    }
    return guarded(list);
}

BwaRestReply Notes::create(const BwaRestCall& call, Note note)
{
    if (!m_store.create(call.session()->user, note)) {
        throw BwaRestProblem(409, "You have as many notes as allowed");
    }
    const QString path = call.path() + '/' + QString::number(note.id);
    return guarded(BwaRestReply::created(path, noteFields.json(note)));
}

BwaRestReply Notes::read(const BwaRestCall& call) const
{
    Note note;
    requireNote(m_store.read(call.session()->user, call.number("id"), note));
    return shown(note);
}

BwaRestReply Notes::change(const BwaRestCall& call, Note note)
{
    note.id = call.number("id");
    requireNote(m_store.change(call.session()->user, note));
    return shown(note);
}

BwaRestReply Notes::remove(const BwaRestCall& call)
{
    requireNote(m_store.remove(call.session()->user, call.number("id")));
    return BwaRestReply::empty();
}
