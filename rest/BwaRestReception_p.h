// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTRECEPTION_P_H
#define BWARESTRECEPTION_P_H

#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "rest/BwaRestLaterState_p.h"
#include "rest/BwaRestUpload.h"

#include <QTemporaryFile>

#include <memory>
#include <vector>

class BwaRestExchange;

/** Receives one upload and answers it. It lives in the listener's thread. */
class BwaRestReception
{
    Q_DISABLE_COPY(BwaRestReception)

public:
    /**
     * Will answer through @a state. @a exchange must exist as long as that is open.
     * @throws BwaRestProblem 400, 411, 413 before anything of the body is read
     */
    BwaRestReception(const BwaRestUpload& upload, BwaRestExchange& exchange,
                     const std::shared_ptr<BwaRestLaterState>& state);

    /**
     * Begins to receive; to be called when the exchange is held. @a self is this object, which
     * exists until the upload ends.
     */
    static void begin(const std::shared_ptr<BwaRestReception>& self);

private:
    enum Progress { Preamble, Header, Content, Over };

    static void nextTurn(const std::shared_ptr<BwaRestReception>& self);
    void step(const std::shared_ptr<BwaRestReception>& self);
    void finish(const std::shared_ptr<BwaRestReception>& self);
    BwaRestReply answer();
    void take(const QByteArray& piece);
    bool takeHeader();
    bool takeContent();
    void beginPart(const BwaRestPart& part, bool isFile);
    void add(const QByteArray& content);
    void endPart();

    const BwaRestUpload m_upload;
    BwaRestExchange& m_exchange;
    const std::shared_ptr<BwaRestLaterState> m_state;
    const quint64 m_size; // bytes of the body
    const bool m_isForm;
    const BwaCgiMultipartFormDataReader m_form; // only used to find delimiters
    quint64 m_received = 0;                     // bytes of the body
    QByteArray m_buffer;                        // has arrived and is not taken yet
    Progress m_progress = Preamble;
    bool m_isFile = false; // the current part
    QList<BwaRestPart> m_parts;
    std::vector<std::unique_ptr<QTemporaryFile>> m_files;
};

#endif
