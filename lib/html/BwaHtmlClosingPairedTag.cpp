// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlClosingPairedTag.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHtmlClosingPairedTag::BwaHtmlClosingPairedTag(const QString& tagName)
    : BwaAbstractHtmlTag(tagName)
{
}

BwaHtmlClosingPairedTag::~BwaHtmlClosingPairedTag() = default;

void BwaHtmlClosingPairedTag::render(std::ostream& stream) const
{
    stream << "</" << tagName() << '>';
}
