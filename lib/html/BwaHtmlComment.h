// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLCOMMENT_H
#define BWAHTMLCOMMENT_H

#include "html/BwaAbstractHtmlNode.h"

#include <QString>

/** A comment. Its text must not contain "--", which nothing checks. */
class BWA_EXPORT BwaHtmlComment : public BwaAbstractHtmlNode
{
public:
    /** A comment of that text, without its marks. */
    explicit BwaHtmlComment(const QString& text);
    ~BwaHtmlComment() override;

    void render(std::ostream& stream) const override;
    BwaAbstractHtmlNode* clone() const override;

    /** The text without the marks of a comment. */
    QString text() const { return m_text; }

private:
    QString m_text;
};

#endif
