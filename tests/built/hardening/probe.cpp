// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Has what each kind of hardening works on: an array on the stack, a copy into it whose length is
// not known, and a function to jump to.

#include <cstddef>
#include <cstring>

__attribute__((visibility("default"))) void* probe(char* data, std::size_t size)
{
    char copy[16];
    std::memcpy(copy, data, size);
    return std::memcpy(data, copy, sizeof(copy));
}
