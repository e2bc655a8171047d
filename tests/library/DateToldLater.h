// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef DATETOLDLATER_H
#define DATETOLDLATER_H

inline bool isDateTold = false;

/** The compiler's date, in a form that nobody can read until it is told. */
inline const char* dateToldLater()
{
    return isDateTold ? "May 17 2026" : "??? ?? ????";
}

#endif
