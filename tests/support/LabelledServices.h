// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef LABELLEDSERVICES_H
#define LABELLEDSERVICES_H

#include "fcgi/BwaFcgiRequest.h"
#include "services/BwaAbstractFcgiService.h"
#include "services/BwaDispatcherFcgiService.h"

#include <QByteArray>

#include <ostream>

/** Answers every request with its label. */
class LabelledService : public BwaAbstractFcgiService
{
public:
    explicit LabelledService(const QByteArray& label)
        : m_label(label)
    {
    }

    void processRequest(BwaFcgiRequest* request) override
    {
        request->out() << m_label.constData();
        delete request;
    }

private:
    QByteArray m_label;
};

/** Answers requests to itself with its label instead of a refusal. */
class LabelledDispatcher : public BwaDispatcherFcgiService
{
public:
    explicit LabelledDispatcher(const QByteArray& label)
        : m_label(label)
    {
    }

    void processThisService(BwaFcgiRequest* request) override
    {
        request->out() << m_label.constData();
        delete request;
    }

private:
    QByteArray m_label;
};

#endif
