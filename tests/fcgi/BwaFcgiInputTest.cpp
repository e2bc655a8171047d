// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiRequest.h"
#include "support/FcgiExchange.h"
#include "support/QtPrinters.h"

#include <QFile>
#include <QList>
#include <QMap>

#include <fcgiapp.h>
#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using Input = BwaFcgiRequest::BwaFcgiInput;

QList<QByteArray> entriesOf(FCGX_ParamArray array)
{
    QList<QByteArray> entries;
    for (; *array; ++array) {
        entries.append(QByteArray(*array));
    }
    return entries;
}

// The most memory that the process has ever had mapped, in KiB.
int peakMappedMemory()
{
    QFile status(QStringLiteral("/proc/self/status"));
    EXPECT_TRUE(status.open(QIODevice::ReadOnly));
    const QByteArray text = status.readAll();
    const int value = text.indexOf("VmPeak:") + 7;
    return text.mid(value, text.indexOf("kB", value) - value).trimmed().toInt();
}

// NAME=VALUE, mostly; names repeat, some entries have no "=".
std::vector<std::string> randomEntries(unsigned int seed)
{
    std::mt19937 random(seed);
    std::vector<std::string> entries(2000);
    for (std::string& entry : entries) {
        for (unsigned int size = random() % 7; size > 0; --size) {
            entry += "ab=A\xe9_"[random() % 6];
        }
    }
    return entries;
}

QString nameOf(const std::string& entry)
{
    return QString::fromLatin1(entry.c_str()).section(QLatin1Char('='), 0, 0);
}

QMap<QString, QString> mapOf(const std::vector<std::string>& entries)
{
    QMap<QString, QString> variables;
    for (const std::string& entry : entries) {
        const size_t equals = entry.find('=');
        if (equals != std::string::npos) {
            variables.insert(nameOf(entry), QString::fromLatin1(entry.c_str() + equals + 1));
        }
    }
    return variables;
}

// A raw request whose parameters and body are those of the test.
class BwaFcgiInput : public testing::Test
{
protected:
    FCGX_Request* accepted(const FcgiParameters& parameters, const QByteArray& body = QByteArray())
    {
        return acceptedBytes(FcgiClient::requestBytes(parameters, body));
    }

    FCGX_Request* acceptedBytes(const QByteArray& bytes)
    {
        m_exchange.reset(new FcgiExchange(FcgiExchange::ofBytes(bytes)));
        m_request.reset(m_exchange->takeFcgxRequest());
        return m_request.get();
    }

    // The request with its parameters replaced by entries, which must outlive the test's input.
    FCGX_Request* acceptedWithEntries(FCGX_ParamArray entries)
    {
        accepted(FcgiParameters());
        m_ownEntries = m_request->envp;
        m_request->envp = entries;
        return m_request.get();
    }

    void TearDown() override
    {
        if (m_ownEntries) {
            m_request->envp = m_ownEntries;
        }
        FCGX_Finish_r(m_request.get());
    }

private:
    std::unique_ptr<FcgiExchange> m_exchange;
    std::unique_ptr<FCGX_Request> m_request;
    FCGX_ParamArray m_ownEntries = nullptr;
};

} // namespace

TEST_F(BwaFcgiInput, GivenVariableReturnsItsValue)
{
    Input input(accepted({{"REQUEST_METHOD", "GET"}, {"SCRIPT_NAME", "/api.fcgi"}}));

    EXPECT_EQ(input.getenv(QStringLiteral("SCRIPT_NAME")), QStringLiteral("/api.fcgi"));
    EXPECT_EQ(input.getenv(QStringLiteral("REQUEST_METHOD")), QStringLiteral("GET"));
}

TEST_F(BwaFcgiInput, GivenEqualsSignsInTheValueKeepsThem)
{
    Input input(accepted({{"A", "b=c="}}));

    EXPECT_EQ(input.getenv(QStringLiteral("A")), QStringLiteral("b=c="));
}

TEST_F(BwaFcgiInput, GivenRepeatedNameReturnsTheLastValue)
{
    Input input(accepted({{"A", "first"}, {"B", "other"}, {"A", "last"}}));

    EXPECT_EQ(input.getenv(QStringLiteral("A")), QStringLiteral("last"));
}

TEST_F(BwaFcgiInput, GivenUnknownNameReturnsNull)
{
    Input input(accepted({{"A", "b"}}));

    EXPECT_TRUE(input.getenv(QStringLiteral("B")).isNull());
}

TEST_F(BwaFcgiInput, GivenEmptyValueReturnsEmptyAndNotNull)
{
    Input input(accepted({{"A", ""}}));

    const QString value = input.getenv(QStringLiteral("A"));

    EXPECT_TRUE(value.isEmpty());
    EXPECT_FALSE(value.isNull());
}

TEST_F(BwaFcgiInput, ComparesNamesCaseSensitively)
{
    Input input(accepted({{"Path_Info", "/x"}}));

    EXPECT_TRUE(input.getenv(QStringLiteral("PATH_INFO")).isNull());
    EXPECT_EQ(input.getenv(QStringLiteral("Path_Info")), QStringLiteral("/x"));
}

TEST_F(BwaFcgiInput, ReadsTextAsLatin1)
{
    Input input(accepted({{"N\xe4me", "caf\xe9 \x80\xff"}}));

    EXPECT_EQ(input.getenv(QString::fromLatin1("N\xe4me")),
              QString::fromLatin1("caf\xe9 \x80\xff"));
}

// They begin at every distance from a boundary of words.
TEST_F(BwaFcgiInput, GivenTextsOfAnyLengthReadsThem)
{
    FcgiParameters parameters;
    for (int length = 0; length < 64; ++length) {
        parameters.append(
            qMakePair("\xe4" + QByteArray::number(100 + length), QByteArray(length, '\xff')));
    }
    Input input(accepted(parameters));

    for (const auto& parameter : std::as_const(parameters)) {
        EXPECT_EQ(input.getenv(QString::fromLatin1(parameter.first)),
                  QString::fromLatin1(parameter.second));
    }
}

TEST_F(BwaFcgiInput, GivenEntryWithoutEqualsSignSkipsIt)
{
    char first[] = "A=1";
    char bare[] = "BARE";
    char last[] = "B=2";
    char* entries[] = {first, bare, last, nullptr};

    Input input(acceptedWithEntries(entries));

    EXPECT_EQ(input.getenv(QStringLiteral("A")), QStringLiteral("1"));
    EXPECT_TRUE(input.getenv(QStringLiteral("BARE")).isNull());
    EXPECT_EQ(input.getenv(QStringLiteral("B")), QStringLiteral("2"));
}

TEST_F(BwaFcgiInput, GivenEntryThatStartsWithTheEqualsSignStoresItUnderTheEmptyName)
{
    char nameless[] = "=value";
    char* entries[] = {nameless, nullptr};

    Input input(acceptedWithEntries(entries));

    EXPECT_EQ(input.getenv(QString::fromLatin1("")), QStringLiteral("value"));
}

TEST_F(BwaFcgiInput, GivenNoEntriesKnowsNoVariable)
{
    char* entries[] = {nullptr};

    Input input(acceptedWithEntries(entries));

    EXPECT_TRUE(input.getenv(QStringLiteral("A")).isNull());
}

TEST_F(BwaFcgiInput, LeavesTheParametersUnchanged)
{
    FCGX_Request* request = accepted({{"A", "b=c"}, {"EMPTY", ""}, {"A", "last"}});
    const QList<QByteArray> before = entriesOf(request->envp);

    Input input(request);

    const QList<QByteArray> expected = {"FCGI_ROLE=RESPONDER", "A=b=c", "EMPTY=", "A=last"};
    EXPECT_EQ(before, expected);
    EXPECT_EQ(entriesOf(request->envp), expected);
}

TEST_F(BwaFcgiInput, WhenTheParametersChangeLaterKeepsItsOwn)
{
    char entry[] = "A=1";
    char* entries[] = {entry, nullptr};
    Input input(acceptedWithEntries(entries));

    entry[2] = '2';

    EXPECT_EQ(input.getenv(QStringLiteral("A")), QStringLiteral("1"));
}

// Whatever makes the look-up fast: the values are those of a plain map.
TEST_F(BwaFcgiInput, GivenRandomEntriesFindsWhatAMapFinds)
{
    const unsigned int seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::vector<std::string> texts = randomEntries(seed);
    std::vector<char*> entries(texts.size() + 1, nullptr);
    for (size_t index = 0; index < texts.size(); ++index) {
        entries[index] = texts[index].data();
    }

    Input input(acceptedWithEntries(entries.data()));

    const QMap<QString, QString> expected = mapOf(texts);
    for (const std::string& text : texts) {
        const QString name = nameOf(text);
        EXPECT_EQ(input.getenv(name), expected.value(name));
        EXPECT_EQ(input.getenv(name).isNull(), !expected.contains(name));
    }
}

TEST_F(BwaFcgiInput, GivenNameBeyondLatin1ReturnsNull)
{
    Input input(accepted({{"\xe9", "b"}}));

    EXPECT_TRUE(input.getenv(QString(QChar(0x1e9))).isNull());
}

TEST_F(BwaFcgiInput, GivenSizeZeroReadsNothing)
{
    Input input(accepted(FcgiParameters(), "body"));

    EXPECT_EQ(input.read(0), QByteArray());
    EXPECT_EQ(input.read(4), QByteArray("body"));
}

TEST_F(BwaFcgiInput, ReadsTheBodyPieceByPiece)
{
    Input input(accepted(FcgiParameters(), QByteArray("ab\0cd", 5)));

    EXPECT_EQ(input.read(3), QByteArray("ab\0", 3));
    EXPECT_EQ(input.read(2), QByteArray("cd"));
    EXPECT_EQ(input.read(2), QByteArray());
}

TEST_F(BwaFcgiInput, WhenBytesAreHeldLeavesThemAlone)
{
    Input input(accepted(FcgiParameters(), "abcdefghijkl"));

    const QByteArray first = input.read(4);
    const QByteArray second = input.read(4);
    const QByteArray third = input.read(8);

    EXPECT_EQ(first, QByteArray("abcd"));
    EXPECT_EQ(second, QByteArray("efgh"));
    EXPECT_EQ(third, QByteArray("ijkl"));
}

TEST_F(BwaFcgiInput, WhenBytesAreChangedReadsTheNextUnharmed)
{
    Input input(accepted(FcgiParameters(), "abcdefgh"));

    input.read(4).fill('x', 10000);

    EXPECT_EQ(input.read(4), QByteArray("efgh"));
}

TEST_F(BwaFcgiInput, GivenShorterBodyReadsWhatThereIsThenNothing)
{
    Input input(accepted(FcgiParameters(), "short"));

    EXPECT_EQ(input.read(100), QByteArray("short"));
    EXPECT_EQ(input.read(100), QByteArray());
}

TEST_F(BwaFcgiInput, GivenBodyOfSeveralRecordsReadsItAtOnce)
{
    QByteArray body(100000, '\0');
    for (int position = 0; position < body.size(); ++position) {
        body[position] = static_cast<char>(position % 251);
    }
    Input input(accepted(FcgiParameters(), body));

    EXPECT_EQ(input.read(100000), body);
}

TEST_F(BwaFcgiInput, GivenBodyThatBreaksOffReadsWhatHasCome)
{
    const int behindTwoBytes = 2 + 4 + 8; // of the body, its padding, the record that ends it
    QByteArray bytes = FcgiClient::requestBytes(FcgiParameters(), "body");
    bytes.chop(behindTwoBytes);
    Input input(acceptedBytes(bytes));

    EXPECT_EQ(input.read(4), QByteArray("bo"));
    EXPECT_EQ(input.read(4), QByteArray());
}

namespace {

struct HugeSize {
    const char* name;
    unsigned int size;
};

class BwaFcgiInputHugeRead
    : public BwaFcgiInput
    , public testing::WithParamInterface<HugeSize>
{
};

} // namespace

TEST_P(BwaFcgiInputHugeRead, TakesMemoryOnlyForWhatArrives)
{
    Input input(accepted(FcgiParameters(), "0123456789"));
    const int before = peakMappedMemory();

    const QByteArray bytes = input.read(GetParam().size);

    EXPECT_EQ(bytes, QByteArray("0123456789"));
    EXPECT_LT(peakMappedMemory() - before, 32 * 1024);
}

INSTANTIATE_TEST_SUITE_P(Cases, BwaFcgiInputHugeRead,
                         testing::Values(HugeSize{"HundredMegabytes", 100u * 1000 * 1000},
                                         HugeSize{"LargestInt", INT_MAX},
                                         HugeSize{"OneAboveTheLargestInt", INT_MAX + 1u},
                                         HugeSize{"LargestUnsigned", UINT_MAX}),
                         [](const auto& info) { return std::string(info.param.name); });
