// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestUpload.h"

#include <stdexcept>

BwaRestUpload::BwaRestUpload(qint64 mostBytes, int mostParts)
    : m_mostBytes(mostBytes)
    , m_mostParts(mostParts)
{
    if (mostBytes < 0) {
        throw std::logic_error("The limit of an upload is negative");
    }
}

BwaRestUpload::~BwaRestUpload() = default;

BwaRestUpload& BwaRestUpload::toFolder(const QString& folder)
{
    m_folder = folder;
    return *this;
}

BwaRestUpload& BwaRestUpload::data(const Piece& piece)
{
    m_data = piece;
    return *this;
}

BwaRestUpload& BwaRestUpload::done(const Done& function)
{
    m_done = function;
    return *this;
}
