// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAABSTRACTHTMLNODE_H
#define BWAABSTRACTHTMLNODE_H

#include "http/BwaAbstractCgiStreamableElement.h"

/** A node of an HTML tree. Nothing is escaped: the caller escapes what comes from outside. */
class BWA_EXPORT BwaAbstractHtmlNode : public BwaAbstractCgiStreamableElement
{
public:
    ~BwaAbstractHtmlNode() override;

    void render(std::ostream& stream) const override = 0;
    /** A new node that the caller owns. */
    virtual BwaAbstractHtmlNode* clone() const = 0;
};

#endif
