// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef INHERITSVIRTUALLY_H
#define INHERITSVIRTUALLY_H

#include <type_traits>
#include <utility>

/** True when @a Base is a virtual base of @a Derived: only then no static downcast exists. */
template <typename Derived, typename Base, typename = void>
struct InheritsVirtually : std::is_base_of<Base, Derived> {
};

template <typename Derived, typename Base>
struct InheritsVirtually<Derived, Base,
                         std::void_t<decltype(static_cast<Derived*>(std::declval<Base*>()))>>
    : std::false_type {
};

#endif
