// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLCLOSINGPAIREDTAG_H
#define BWAHTMLCLOSINGPAIREDTAG_H

#include "html/BwaAbstractHtmlTag.h"

/** A closing tag, such as </p>. */
class BWA_EXPORT BwaHtmlClosingPairedTag : public BwaAbstractHtmlTag
{
public:
    /** The end of an element of that name. */
    explicit BwaHtmlClosingPairedTag(const QString& tagName);
    ~BwaHtmlClosingPairedTag() override;

    BwaHtmlClosingPairedTag(const BwaHtmlClosingPairedTag&) = default;
    BwaHtmlClosingPairedTag& operator=(const BwaHtmlClosingPairedTag&) = default;

    void render(std::ostream& stream) const override;
};

#endif
