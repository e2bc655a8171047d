// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLATTRIBUTE_H
#define BWAHTMLATTRIBUTE_H

#include "http/BwaAbstractCgiStreamableElement.h"

#include <QString>

/** An attribute of a tag. Nothing is escaped: the caller escapes what comes from outside. */
class BWA_EXPORT BwaHtmlAttribute : public BwaAbstractCgiStreamableElement
{
public:
    /** A boolean attribute in the XHTML form: its value is its name. */
    explicit BwaHtmlAttribute(const QString& name);
    /** An attribute with a value, which may be empty. */
    BwaHtmlAttribute(const QString& name, const QString& value);
    ~BwaHtmlAttribute() override;

    BwaHtmlAttribute(const BwaHtmlAttribute&) = default;
    BwaHtmlAttribute& operator=(const BwaHtmlAttribute&) = default;

    /** Writes name="value", also for an empty value. */
    void render(std::ostream& stream) const override;

    /** The name; it is written unchanged. */
    QString name() const { return m_name; }
    /** The value; it is written unchanged, between quotes. */
    QString value() const { return m_value; }

private:
    QString m_name;
    QString m_value;
};

#endif
