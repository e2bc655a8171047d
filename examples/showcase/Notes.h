// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef NOTES_H
#define NOTES_H

#include <bwebapi/rest.h>

class NoteStore;
struct Note;

/** Which part of the list a client asks for. */
struct NotesQuery {
    qint64 after = 0; // the id of the last note of the part before
};

/** The routes to the notes of the user who is logged in. */
class Notes
{
    Q_DISABLE_COPY(Notes)

public:
    /** @a store is not owned, and must outlive this. */
    explicit Notes(NoteStore& store);

    /** Adds the routes at "/notes" below @a users, which must need a session. */
    void addTo(BwaRestGroup& users);

private:
    void addNote(BwaRestGroup& notes);
    BwaRestReply list(const BwaRestCall& call, const NotesQuery& query) const;
    BwaRestReply create(const BwaRestCall& call, Note note);
    BwaRestReply read(const BwaRestCall& call) const;
    BwaRestReply change(const BwaRestCall& call, Note note);
    BwaRestReply remove(const BwaRestCall& call);

    NoteStore& m_store;
};

#endif
