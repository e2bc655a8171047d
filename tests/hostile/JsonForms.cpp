// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "hostile/Forms.h"
#include "hostile/Measuring.h"
#include "json/BwaJson.h"
#include "support/HostileBodies.h"

namespace {

enum class Verdict { Accepted, Refused };

// Destroying the value is measured, too.
void parse(const QByteArray& text, Verdict verdict)
{
    measure([&] {
        bool ok = false;
        BwaJson::parse(text, &ok);
        return ok == (verdict == Verdict::Accepted);
    });
}

void parseOpenArrays(int size)
{
    parse(QByteArray(size, '['), Verdict::Refused);
}

void parseDeepArrays(int size)
{
    const QByteArray deep = QByteArray(1000, '[') + QByteArray(1000, ']') + ",";
    parse("[" + deep.repeated(size / deep.size()) + "0]", Verdict::Accepted);
}

void parseDeepObjects(int size)
{
    const QByteArray deep = QByteArray("{\"\":").repeated(1000) + "0" + QByteArray(1000, '}') + ",";
    parse("[" + deep.repeated(size / deep.size()) + "0]", Verdict::Accepted);
}

void parseString(int size)
{
    parse("\"" + QByteArray(size, 'x') + "\"", Verdict::Accepted);
}

void parseEscapedString(int size)
{
    parse("\"" + repeated("\\u0000", size) + "\"", Verdict::Accepted);
}

void parseNumber(int size)
{
    parse("0." + QByteArray(size, '1'), Verdict::Accepted);
}

void parseHugeNumber(int size)
{
    parse(QByteArray(size, '9'), Verdict::Refused);
}

void parseBlanks(int size)
{
    parse(QByteArray(size, ' ') + "0", Verdict::Accepted);
}

void parseNoJson(int size)
{
    parse(QByteArray(size, 'x'), Verdict::Refused);
}

void parseUnfinishedArray(int size)
{
    parse("[" + repeated("0,", size), Verdict::Refused);
}

void parseFlatArray(int size)
{
    parse("[0" + repeated(",0", size) + "]", Verdict::Accepted);
}

void parseEmptyStrings(int size)
{
    parse("[\"\"" + repeated(",\"\"", size) + "]", Verdict::Accepted);
}

void parseDistinctMembers(int size)
{
    QByteArray text = "{";
    for (int i = 0; text.size() < size; ++i) {
        text += "\"" + QByteArray::number(i) + "\":0,";
    }
    parse(text + "\"\":0}", Verdict::Accepted);
}

void write(const QVariant& value)
{
    measure([&] { return !BwaJson::write(value).isNull(); });
}

void writeEscapes(int size)
{
    write(QString(size, QChar(0)));
}

void writeLoneSurrogates(int size)
{
    write(QString(size, QChar(0xD800)));
}

void writeFlatList(int size)
{
    QVariantList list;
    for (int i = 0; i < size; ++i) {
        list.append(i);
    }
    write(list);
}

} // namespace

QList<Form> jsonForms()
{
    return {
        {"time", "open-arrays", parseOpenArrays},
        {"time", "deep-arrays", parseDeepArrays},
        {"time", "deep-objects", parseDeepObjects},
        {"time", "long-string", parseString},
        {"time", "long-escaped-string", parseEscapedString},
        {"time", "long-number", parseNumber},
        {"time", "huge-number", parseHugeNumber},
        {"time", "blanks", parseBlanks},
        {"time", "no-json", parseNoJson},
        {"time", "unfinished-array", parseUnfinishedArray},
        {"time", "flat-array", parseFlatArray},
        {"time", "empty-strings", parseEmptyStrings},
        {"time", "distinct-members", parseDistinctMembers},
        {"time", "write-escapes", writeEscapes},
        {"time", "write-lone-surrogates", writeLoneSurrogates},
        {"time", "write-flat-list", writeFlatList},
        {"memory", "flat-json-array", parseFlatArray},
    };
}
