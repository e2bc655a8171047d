// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSTOPSIGNALS_P_H
#define BWARESTSTOPSIGNALS_P_H

#include <QObject>

#include <csignal>

/** SIGTERM and SIGINT, as events of this thread; one object at a time. */
class BwaRestStopSignals : public QObject
{
    Q_OBJECT

public:
    /** Takes the signals over. @throws std::runtime_error without a descriptor for them */
    BwaRestStopSignals();
    /** Gives them back. */
    ~BwaRestStopSignals() override;

Q_SIGNALS:
    /** One of them has come. */
    void received();

protected:
    bool eventFilter(QObject* notifier, QEvent* event) override;

private:
    struct sigaction m_previousTerminate;
    struct sigaction m_previousInterrupt;
};

#endif
