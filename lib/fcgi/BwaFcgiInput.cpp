// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The nested class BwaFcgiRequest::BwaFcgiInput.

#include "cgi/BwaReadInPieces_p.h"
#include "fcgi/BwaFcgiExchange_p.h"
#include "fcgi/BwaFcgiRequest.h"

#include <algorithm>
#include <cstring>

namespace {

// A hash of a variable's name, made of its size, its middle and its last character: these tell the
// names of CGI variables apart.
template <typename Character>
unsigned int hashOf(const Character* name, BwaSize size)
{
    const auto middle = static_cast<unsigned char>(size > 0 ? name[size / 2] : 0);
    const auto last = static_cast<unsigned char>(size > 0 ? name[size - 1] : 0);
    return static_cast<unsigned int>(size) + 2U * middle + 12U * last;
}

const unsigned int smallRead = 4096; // bytes

// Small reads return this buffer, so that they allocate nothing. As long as a caller keeps a
// result, further reads allocate. An allocation above 1 KiB makes malloc join all small free
// pieces, and then split them again for the strings of the request. That was a quarter of the cost
// of a form of 50 fields.
QByteArray& keptBuffer()
{
    thread_local QByteArray buffer = [] {
        QByteArray bytes;
        bytes.reserve(smallRead);
        return bytes;
    }();
    return buffer;
}

} // namespace

// Applications ask for few of the variables. So the constructor only copies their bytes, and
// getenv() converts the one that it returns.
BwaFcgiRequest::BwaFcgiInput::BwaFcgiInput(FCGX_Request* request)
    : m_request(request)
    , m_exchange(nullptr)
    , m_buckets()
{
    std::size_t textSize = 0;
    int count = 0;
    for (char** entry = request->envp; *entry; ++entry) {
        textSize += std::strlen(*entry) + 1;
        ++count;
    }
    m_text = QByteArray(static_cast<BwaSize>(textSize), Qt::Uninitialized);
    m_variables.reserve(count);
    std::fill_n(m_buckets, bucketCount, -1);
    char* name = m_text.data();
    for (char** entry = request->envp; *entry; ++entry) {
        char* const end = ::stpcpy(name, *entry);
        const void* const equals = std::memchr(name, '=', static_cast<std::size_t>(end - name));
        if (equals) {
            const int nameSize = static_cast<int>(static_cast<const char*>(equals) - name);
            const int valueSize = static_cast<int>(end - name) - nameSize - 1;
            int& bucket = m_buckets[hashOf(name, nameSize) % bucketCount];
            m_variables.append(
                {static_cast<int>(name - m_text.constData()), nameSize, valueSize, bucket});
            bucket = static_cast<int>(m_variables.size()) - 1;
        }
        name = end + 1;
    }
}

BwaFcgiRequest::BwaFcgiInput::~BwaFcgiInput() = default;

QByteArray BwaFcgiRequest::BwaFcgiInput::read(unsigned int size)
{
    if (!m_request) {
        return QByteArray();
    }
    const auto readPiece = [this](char* buffer, int length) {
        return m_exchange ? m_exchange->read(buffer, length)
                          : FCGX_GetStr(buffer, length, m_request->in);
    };
    QByteArray& kept = keptBuffer();
    if (size > smallRead || !kept.isDetached()) {
        return BwaReadInPieces::read(size, readPiece);
    }
    kept.resize(static_cast<BwaSize>(size));
    kept.resize(readPiece(kept.data(), static_cast<int>(size)));
    return kept;
}

QString BwaFcgiRequest::BwaFcgiInput::getenv(const QString& name)
{
    int index = m_buckets[hashOf(name.utf16(), name.size()) % bucketCount];
    while (index >= 0) { // from the last variable to the first, because the last one counts
        const Variable& variable = m_variables.at(index);
        const QLatin1String variableName(m_text.constData() + variable.position, variable.nameSize);
        if (name == variableName) {
            return QLatin1String(variableName.data() + variable.nameSize + 1, variable.valueSize);
        }
        index = variable.next;
    }
    return QString();
}
