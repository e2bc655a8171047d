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

/** One upload from its first byte to its reply; lives in the listener's thread. */
class BwaRestReception
{
    Q_DISABLE_COPY(BwaRestReception)

public:
    /**
     * @a exchange is answered through @a state, and must live as long as that is open.
     * @throws BwaRestProblem 400, 411, 413: nothing of the body is to be read
     */
    BwaRestReception(const BwaRestUpload& upload, BwaRestExchange& exchange,
                     const std::shared_ptr<BwaRestLaterState>& state);

    /** To be called once the exchange is held; @a self is this, and is kept until the end. */
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
    const BwaCgiMultipartFormDataReader m_form; // knows the delimiters, reads nothing
    quint64 m_received = 0;                     // bytes of the body
    QByteArray m_buffer;                        // came and not taken yet
    Progress m_progress = Preamble;
    bool m_isFile = false; // the last part
    QList<BwaRestPart> m_parts;
    std::vector<std::unique_ptr<QTemporaryFile>> m_files;
};

#endif
