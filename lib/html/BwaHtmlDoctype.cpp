// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlDoctype.h"

#include <ostream>

namespace {

// In the order of the enumeration.
// Settled: xhtml1-loose.dtd, html1-frameset.dtd and html11.dtd differ from the published names.
const char* const declarations[] = {
    R"(<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01//EN" "http://www.w3.org/TR/html4/strict.dtd">)",
    R"(<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01 Transitional//EN" "http://www.w3.org/TR/html4/loose.dtd">)",
    R"(<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01 Frameset//EN" "http://www.w3.org/TR/html4/frameset.dtd">)",
    R"(<!DOCTYPE html PUBLIC "-//W3C//DTD XHTML 1.0 Strict//EN" "http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd">)",
    R"(<!DOCTYPE html PUBLIC "-//W3C//DTD XHTML 1.0 Transitional//EN" "http://www.w3.org/TR/xhtml1/DTD/xhtml1-loose.dtd">)",
    R"(<!DOCTYPE html PUBLIC "-//W3C//DTD XHTML 1.0 Frameset//EN" "http://www.w3.org/TR/xhtml1/DTD/html1-frameset.dtd">)",
    R"(<!DOCTYPE html PUBLIC "-//W3C//DTD XHTML 1.1//EN" "http://www.w3.org/TR/xhtml11/DTD/html11.dtd">)",
    "<!DOCTYPE html>",
};

} // namespace

BwaHtmlDoctype::BwaHtmlDoctype(DocumentType documentType)
    : m_documentType(documentType)
{
}

BwaHtmlDoctype::~BwaHtmlDoctype() = default;

void BwaHtmlDoctype::render(std::ostream& stream) const
{
    if (m_documentType >= Html401Strict && m_documentType <= Html5) {
        stream << declarations[m_documentType];
    }
}
