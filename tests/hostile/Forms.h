// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FORMS_H
#define FORMS_H

#include <QList>

/** A kind of input, of any size, that is given to the library while its cost is measured. */
struct Form {
    const char* group; // what it is measured for: time, memory, tokens; or a control of the checks
    const char* name;
    /** Makes an input of about @a size bytes and measures what the library does with it. */
    void (*run)(int size);
};

QList<Form> bodyForms();
QList<Form> textForms();
QList<Form> jsonForms();
QList<Form> tokenForms();

#endif
