// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Events are numbered, and the last ones are kept: they are a window that moves over all events.
// For each client only the number of its next event is kept, and the event that is being written to
// it. So a client that reads nothing costs the same memory however much is sent: the window moves
// past it.

#include "rest/BwaRestEvents.h"

#include "fcgi/BwaFcgiRequest.h"
#include "json/BwaJson.h"
#include "rest/BwaRestCall.h"
#include "rest/BwaRestExchange_p.h"
#include "rest/BwaRestLaterState_p.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QPointer>
#include <QRandomGenerator>
#include <QThread>

#include <algorithm>
#include <deque>
#include <map>
#include <mutex>
#include <stdexcept>

namespace {

const int mostPieceSize = 8192; // bytes that fit whenever canWrite() is true
const int noDeadline = -1;
const QByteArray comment = QByteArrayLiteral(":\n\n");

QByteArray eventText(const QVariant& json, const QString& name)
{
    bool ok = false;
    const QByteArray data = BwaJson::write(json, &ok);
    if (!ok) {
        throw std::logic_error("The data of an event is no JSON");
    }
    QByteArray text = name.toUtf8();
    for (const char byte : {'\r', '\n', '\0'}) {
        text.replace(QByteArray(1, byte), QByteArray());
    }
    return (text.isEmpty() ? text : "event: " + text + '\n') + "data: " + data + "\n\n";
}

} // namespace

class BwaRestEvents::Topic : public QObject
{
public:
    Topic(Slow slow, int mostKept, int heartbeat)
        : m_slow(slow)
        , m_mostKept(static_cast<std::size_t>(std::max(mostKept, 1)))
        , m_heartbeat(heartbeat)
        , m_name(QByteArray::number(QRandomGenerator::system()->generate(), 16) + '-')
    {
    }
    ~Topic() override;

    void add(const std::shared_ptr<BwaRestLaterState>& state, BwaRestExchange* exchange);
    void send(const QByteArray& text);

protected:
    bool event(QEvent* event) override;

private:
    struct Client {
        std::shared_ptr<BwaRestLaterState> state;
        BwaRestExchange* exchange = nullptr; // not owned; lives as long as the state is open
        quint64 next = 0;                    // number of the event after the one in text
        QByteArray text;                     // the event that is being written
        BwaSize written = 0;                 // bytes of text
        bool isBlocked = false;              // until the web server takes more
    };

    quint64 numberBehind(const QByteArray& lastEventId) const;
    bool isOver(const Client& client) const;
    void sendToAll();
    void beat();
    void fill(Client& client) const;
    void writeTo(Client& client);
    void goOn(quint64 id);

    const Slow m_slow;
    const std::size_t m_mostKept;
    const int m_heartbeat; // milliseconds
    const QByteArray m_name;
    int m_timer = 0;                     // 0: not started
    std::map<quint64, Client> m_clients; // by the id of the state
    mutable std::mutex m_mutex;          // guards what follows
    std::deque<QByteArray> m_events;     // the kept events
    quint64 m_first = 1;                 // number of the first kept event
    bool m_isWoken = false;              // an event of Qt is on its way to sendToAll()
};

BwaRestEvents::Topic::~Topic()
{
    for (const auto& client : m_clients) {
        client.second.state->reply(BwaRestReply::empty());
    }
}

void BwaRestEvents::Topic::add(const std::shared_ptr<BwaRestLaterState>& state,
                               BwaRestExchange* exchange)
{
    if (m_timer == 0 && m_heartbeat > 0) {
        m_timer = startTimer(m_heartbeat);
    }
    Client& client = m_clients[state->id()];
    client.state = state;
    client.exchange = exchange;
    client.next = numberBehind(exchange->header("Last-Event-ID"));
    client.text = comment;
    state->onGone([this, id = state->id()] { m_clients.erase(id); });
    writeTo(client);
}

// The number of the first event that a client is sent: the one after @a lastEventId; the oldest
// kept one when that id is not kept; the next new one when the id is empty.
quint64 BwaRestEvents::Topic::numberBehind(const QByteArray& lastEventId) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const quint64 end = m_first + m_events.size();
    bool ok = false;
    const quint64 last = lastEventId.mid(m_name.size()).toULongLong(&ok);
    const bool isOurs = ok && lastEventId.startsWith(m_name) && last >= m_first && last < end;
    return isOurs ? last + 1 : (lastEventId.isEmpty() ? end : m_first);
}

void BwaRestEvents::Topic::send(const QByteArray& text)
{
    const bool isHere = QThread::currentThread() == thread();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const quint64 number = m_first + m_events.size();
        m_events.push_back("id: " + m_name + QByteArray::number(number) + '\n' + text);
        if (m_events.size() > m_mostKept) {
            m_events.pop_front();
            ++m_first;
        }
        if (!isHere && !m_isWoken) {
            m_isWoken = true;
            QCoreApplication::postEvent(this, new QEvent(QEvent::User));
        }
    }
    if (isHere) {
        sendToAll();
    }
}

bool BwaRestEvents::Topic::event(QEvent* event)
{
    if (event->type() == QEvent::User) {
        sendToAll();
    } else if (event->type() == QEvent::Timer) {
        beat();
    }
    return QObject::event(event);
}

// Whether a client's stream is to end: the application has answered the call through another
// handle, or, with EndSlow, the client has missed an event.
bool BwaRestEvents::Topic::isOver(const Client& client) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return !client.state->isOpen() || (m_slow == EndSlow && client.next < m_first);
}

void BwaRestEvents::Topic::sendToAll()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isWoken = false;
    }
    for (auto client = m_clients.begin(); client != m_clients.end();) {
        if (isOver(client->second)) {
            client->second.state->reply(BwaRestReply::empty());
            client = m_clients.erase(client);
        } else {
            writeTo(client->second);
            ++client;
        }
    }
}

void BwaRestEvents::Topic::beat()
{
    for (auto& client : m_clients) {
        if (client.second.text.isEmpty()) {
            client.second.text = comment;
            writeTo(client.second);
        }
    }
}

// When the client's text has been written, replaces it with the next event, or with an empty text
// when there is none.
void BwaRestEvents::Topic::fill(Client& client) const
{
    if (client.written < client.text.size()) {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    const quint64 end = m_first + m_events.size();
    if (client.next < end) {
        client.next = m_slow == LatestWins ? end - 1 : std::max(client.next, m_first);
        client.text = m_events[static_cast<std::size_t>(client.next - m_first)];
        ++client.next;
    } else {
        client.text.clear();
    }
    client.written = 0;
}

void BwaRestEvents::Topic::writeTo(Client& client)
{
    if (client.isBlocked || !client.state->isOpen()) {
        return;
    }
    while (client.exchange->request().canWrite()) {
        fill(client);
        if (client.text.isEmpty()) {
            return;
        }
        const QByteArray piece = client.text.mid(client.written, mostPieceSize);
        client.exchange->writePiece(piece);
        client.written += piece.size();
    }
    client.isBlocked = true;
    // When the topic is destroyed, the exchange exists until the event loop has ended the stream.
    const QPointer<Topic> topic(this);
    client.exchange->whenReady(QSocketNotifier::Write, [topic, id = client.state->id()] {
        if (topic) {
            topic->goOn(id);
        }
    });
}

void BwaRestEvents::Topic::goOn(quint64 id)
{
    const auto client = m_clients.find(id);
    if (client != m_clients.end()) {
        client->second.isBlocked = false;
        writeTo(client->second);
    }
}

BwaRestEvents::BwaRestEvents(Slow slow, int mostWaiting, int heartbeat)
    : m_topic(new Topic(slow, mostWaiting, heartbeat))
{
}

BwaRestEvents::~BwaRestEvents() = default;

BwaRestReply BwaRestEvents::join(const BwaRestCall& call)
{
    BwaRestReply reply = BwaRestReply::bytes(QByteArray(), "text/event-stream");
    reply.header("Cache-Control", "no-cache").header("X-Accel-Buffering", "no");
    if (call.method() != "HEAD") {
        reply.m_later = call.later(noDeadline).m_state;
        reply.m_whenHeld = [topic = m_topic.get(), state = reply.m_later](
                               BwaRestExchange& exchange, const BwaRestReply& begun) {
            exchange.beginStream(begun);
            topic->add(state, &exchange);
        };
    }
    return reply;
}

void BwaRestEvents::send(const QVariant& json, const QString& name)
{
    m_topic->send(eventText(json, name));
}
