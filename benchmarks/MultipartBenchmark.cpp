// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaAbstractCgiInput.h"
#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "cgi/BwaCgiRequest.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>

namespace {

const int fileSize = 10 * 1024 * 1024; // bytes

/** The input of a multipart request, in memory. */
class UploadInput : public BwaAbstractCgiInput
{
public:
    explicit UploadInput(const QByteArray& body)
        : m_body(body)
        , m_position(0)
    {
    }

    QByteArray read(unsigned int size) override
    {
        const int available = m_body.size() - m_position;
        QByteArray bytes = m_body.mid(
            m_position, static_cast<int>(std::min(size, static_cast<unsigned int>(available))));
        m_position += bytes.size();
        return bytes;
    }

    QString getenv(const QString& name) override
    {
        if (name == QLatin1String("CONTENT_TYPE")) {
            return QStringLiteral("multipart/form-data; boundary=----d74496d66958873e");
        }
        return name == QLatin1String("CONTENT_LENGTH") ? QString::number(m_body.size()) : QString();
    }

private:
    const QByteArray m_body;
    int m_position;
};

QByteArray noise()
{
    std::mt19937 generator(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same file in each run
    QByteArray file(fileSize, Qt::Uninitialized);
    std::generate(file.begin(), file.end(),
                  [&generator] { return static_cast<char>(generator()); });
    return file;
}

// Lines of text that end, and partly begin, as a delimiter does.
QByteArray lines()
{
    const QByteArray line = "\r\n--" + QByteArray(72, 'x') + "\r\n" + QByteArray(72, 'y');
    return line.repeated(fileSize / line.size());
}

QByteArray bodyOf(const QByteArray& file)
{
    return "------d74496d66958873e\r\nContent-Disposition: form-data; name=\"file\"; "
           "filename=\"photo.jpg\"\r\nContent-Type: image/jpeg\r\n\r\n" +
        file + "\r\n------d74496d66958873e--\r\n";
}

qint64 readInPieces(BwaCgiMultipartFormDataReader& reader)
{
    qint64 size = 0;
    while (true) {
        const QByteArray piece = reader.readFromPart(4096);
        benchmark::DoNotOptimize(piece.constData());
        size += piece.size();
        if (piece.isEmpty()) {
            return size;
        }
    }
}

qint64 readAtOnce(BwaCgiMultipartFormDataReader& reader)
{
    return reader.readAllFromPart().size();
}

using Read = qint64 (*)(BwaCgiMultipartFormDataReader&);

void multipart(benchmark::State& state, const QByteArray& file, Read read)
{
    const QByteArray body = bodyOf(file);
    for (auto _ : state) {
        UploadInput input(body);
        BwaCgiRequest request(&input);
        BwaCgiMultipartFormDataReader reader(&request);
        QString name;
        QString fileName;
        QString contentType;
        if (!reader.nextPart(name, fileName, contentType) || read(reader) != file.size()) {
            state.SkipWithError("the file is not delivered");
            break;
        }
    }
    state.SetBytesProcessed(state.iterations() * file.size());
}
BENCHMARK_CAPTURE(multipart, noiseInPieces, noise(), readInPieces)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(multipart, noiseAtOnce, noise(), readAtOnce)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(multipart, linesInPieces, lines(), readInPieces)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(multipart, linesAtOnce, lines(), readAtOnce)->Unit(benchmark::kMillisecond);

} // namespace
