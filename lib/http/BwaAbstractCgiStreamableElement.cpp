// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaAbstractCgiStreamableElement.h"

#include <ostream>

BwaAbstractCgiStreamableElement::~BwaAbstractCgiStreamableElement() = default;

std::ostream& operator<<(std::ostream& stream, const BwaAbstractCgiStreamableElement& element)
{
    element.render(stream);
    return stream;
}
