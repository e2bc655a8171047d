// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// libfcgi leaks 48 bytes for every management record of an unknown type. The functions that do so
// have no names, so all allocations of libfcgi are left out, only in programs that send such
// records. A request that we leak is still reported, because the listener allocates it.

#include <QtGlobal>

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" Q_DECL_EXPORT const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfcgi.so";
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
