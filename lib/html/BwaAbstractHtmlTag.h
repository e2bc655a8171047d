// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAABSTRACTHTMLTAG_H
#define BWAABSTRACTHTMLTAG_H

#include "http/BwaAbstractCgiStreamableElement.h"

#include <QString>

/** A tag: the opening or the closing one of a pair, or an unpaired one such as <br />. */
class BWA_EXPORT BwaAbstractHtmlTag : public BwaAbstractCgiStreamableElement
{
public:
    /** A tag of that name, which is not checked. */
    explicit BwaAbstractHtmlTag(const QString& tagName);
    ~BwaAbstractHtmlTag() override;

    BwaAbstractHtmlTag(const BwaAbstractHtmlTag&) = default;
    BwaAbstractHtmlTag& operator=(const BwaAbstractHtmlTag&) = default;

    void render(std::ostream& stream) const override = 0;

    /** The name of the tag; it is written unchanged. */
    QString tagName() const { return m_tagName; }

private:
    QString m_tagName;
};

#endif
