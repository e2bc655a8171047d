// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// libfcgi loses 48 bytes for every management record of a type that it does not know. Its functions
// that do have no names, so all that it allocates is left out: only for programs that send such
// records. A request that we lose is still reported: it is allocated by the listener.

#include <QtGlobal>

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" Q_DECL_EXPORT const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfcgi.so";
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
