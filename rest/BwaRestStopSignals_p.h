// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSTOPSIGNALS_P_H
#define BWARESTSTOPSIGNALS_P_H

#include <QObject>

#include <csignal>

/**
 * Turns SIGTERM and SIGINT into a signal of Qt, in this object's thread. Only one object may exist
 * at a time.
 */
class BwaRestStopSignals : public QObject
{
    Q_OBJECT

public:
    /** Installs the signal handlers. @throws std::runtime_error when no descriptor is left */
    BwaRestStopSignals();
    /** Restores the previous handlers. */
    ~BwaRestStopSignals() override;

Q_SIGNALS:
    /** SIGTERM or SIGINT has arrived. */
    void received();

protected:
    bool eventFilter(QObject* notifier, QEvent* event) override;

private:
    struct sigaction m_previousTerminate;
    struct sigaction m_previousInterrupt;
};

#endif
