// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLDOCTYPE_H
#define BWAHTMLDOCTYPE_H

#include "http/BwaAbstractCgiStreamableElement.h"

/** A document type declaration. */
class BWA_EXPORT BwaHtmlDoctype : public BwaAbstractCgiStreamableElement
{
public:
    /** The declarations that can be written. */
    enum DocumentType : int {
        Html401Strict,
        Html401Transitional,
        Html401Frameset,
        Xhtml10Strict,
        Xhtml10Transitional,
        Xhtml10Frameset,
        Xhtml11,
        Html5
    };

    /** The declaration of that type. */
    explicit BwaHtmlDoctype(DocumentType documentType);
    ~BwaHtmlDoctype() override;

    /** Writes the declaration without a line end; nothing for a value that is no member. */
    void render(std::ostream& stream) const override;

    /** The type that is declared. */
    DocumentType documentType() const { return m_documentType; }

private:
    DocumentType m_documentType;
};

#endif
