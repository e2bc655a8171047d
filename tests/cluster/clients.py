# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

"""Clients of the showcase that keep book of what they were promised.

clients.py PORT USER...: each user logs in and writes, changes, reads and deletes notes without a
pause; one more client logs in, renews and logs out again and again. Standard input says what to do,
a word a line; each is answered by a line:

begin    forget what was counted
fault    something is about to be killed
settled  all works again: no request may fail from now on
more     wait until each client has made 20 more requests
report   requests, failed ones, ms from the fault to the end of the last of these, ms that the longest
         request took, failures after "settled", wrong replies
check    how many sessions and acknowledged writes are lost
"""

import http.client
import json
import random
import sys
import threading
import time

PASSWORD = "tea and biscuits"


class Book:
    """What all clients count, and when it happened."""

    def __init__(self):
        self.lock = threading.Lock()
        self.begin()

    def begin(self):
        with self.lock:
            self.requests = self.late = self.wrong = 0
            self.failures = []
            self.longest = 0.0
            self.fault = self.settled = None

    def add(self, start, end, has_failed):
        with self.lock:
            self.requests += 1
            self.longest = max(self.longest, end - start)
            if has_failed:
                self.failures.append(end)
                self.late += self.settled is not None and start > self.settled

    def is_disturbed(self):
        """Whether something has been killed and is not known to be back."""
        return self.fault is not None and self.settled is None

    def complain(self, text):
        with self.lock:
            self.wrong += 1
        print(text, file=sys.stderr, flush=True)

    def report(self):
        with self.lock:
            away = max(self.failures) - self.fault if self.failures else 0
            return "%d %d %d %d %d %d" % (self.requests, len(self.failures), 1000 * away,
                                          1000 * self.longest, self.late, self.wrong)


class Client(threading.Thread):
    def __init__(self, port, user, book):
        super().__init__(daemon=True)
        self.port, self.user, self.book = port, user, book
        self.connection = None
        self.turn = threading.Lock()  # held while a request and its entry in the books are made
        self.count = 0

    def run(self):
        while True:
            with self.turn:
                self.step()
                self.count += 1

    def ask(self, method, path, body=None, session=None):
        """Returns status and JSON value; the status is 0 when no reply came."""
        headers = {"Content-Type": "application/json"} if body else {}
        if session:
            headers["Authorization"] = "SESSION-TOKEN %s:%s" % session
        start = time.monotonic()
        status, value = self.exchange(method, path, json.dumps(body) if body else None, headers)
        has_failed = status == 0 or status >= 500
        self.book.add(start, time.monotonic(), has_failed)
        if has_failed:
            time.sleep(0.02)  # as a client that is told to come back later
        return status, value

    def exchange(self, method, path, body, headers):
        try:
            if not self.connection:
                self.connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=30)
            self.connection.request(method, "/api" + path, body, headers)
            reply = self.connection.getresponse()
            content = reply.read()
            isJson = reply.getheader("Content-Type", "").startswith("application/json")
            return reply.status, json.loads(content) if content and isJson else None
        except (OSError, http.client.HTTPException):
            self.connection.close()
            self.connection = None
            return 0, None

    def log_in(self):
        """Returns the session, None without a promise."""
        status, value = self.ask("POST", "/session", {"user": self.user, "password": PASSWORD})
        if status == 200:
            return value["session"], value["token"]
        if 0 < status < 500:
            self.book.complain("login of %s: %d" % (self.user, status))
        return None

    def expect(self, wanted, status, what):
        """Whether the status is the wanted one; a failed request is neither that nor wrong."""
        if 0 < status < 500 and status != wanted:
            self.book.complain("%s of %s: %d instead of %d" % (what, self.user, status, wanted))
        return status == wanted


class Writer(Client):
    """Has one session all the time."""

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self.session = None
        self.number = 0
        self.notes = {}  # id to the titles that the note may have; None: it may be gone
        self.unconfirmed = set()  # titles of notes that may have been written

    def step(self):
        if not self.session:
            self.session = self.log_in()
            return
        identity = random.choice(list(self.notes) or [0])
        if not identity or random.random() < 0.25 and len(self.notes) < 50:
            self.write()
        else:
            random.choice([self.read, self.read, self.change, self.remove])(identity)

    def title(self):
        self.number += 1
        return "%s %d" % (self.user, self.number)

    def write(self):
        title = self.title()
        status, value = self.ask("POST", "/notes", {"title": title}, self.session)
        if self.expect(201, status, "new note"):
            self.notes[value["id"]] = {title}
        else:
            self.unconfirmed.add(title)

    def read(self, identity):
        status, value = self.ask("GET", "/notes/%d" % identity, None, self.session)
        if status == 404 and None in self.notes[identity]:
            del self.notes[identity]
        elif self.expect(200, status, "note") and value["title"] not in self.notes[identity]:
            self.book.complain("note %d is %s" % (identity, value["title"]))

    def change(self, identity):
        title = self.title()
        status, _ = self.ask("PUT", "/notes/%d" % identity, {"title": title}, self.session)
        if status == 404 and None in self.notes[identity]:
            del self.notes[identity]
        elif self.expect(200, status, "change"):
            self.notes[identity] = {title}
        else:
            self.notes[identity].add(title)

    def remove(self, identity):
        status, _ = self.ask("DELETE", "/notes/%d" % identity, None, self.session)
        # nginx repeats a removal at another process when the first one died before it could answer.
        if status == 404 and (None in self.notes[identity] or self.book.is_disturbed()):
            del self.notes[identity]
        elif self.expect(204, status, "removal"):
            del self.notes[identity]
        else:
            self.notes[identity].add(None)

    def stored(self):
        """Id to title of all that is stored; None when the session is lost."""
        notes, last = {}, 0
        while True:
            status, page = self.ask("GET", "/notes?after=%d" % last, None, self.session)
            if status != 200:
                return None
            if not page:
                return notes
            notes.update((note["id"], note["title"]) for note in page)
            last = page[-1]["id"]

    def check(self):
        with self.turn:
            if not self.session:
                return 0, 0
            stored = self.stored()
            if stored is None:
                return 1, 0
            lost = 0
            for identity, titles in self.notes.items():
                lost += stored.pop(identity, None) not in titles
            # What is left was written without a reply, once, or removed although a reply said so.
            for title in stored.values():
                lost += title not in self.unconfirmed
                self.unconfirmed.discard(title)
            self.notes.update((identity, {title}) for identity, title in stored.items())
            return 0, lost


class Guest(Client):
    """Has a new session each time, and knows those that it has ended."""

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self.ended = []
        self.session = None

    def step(self):
        self.session = self.log_in()
        if self.session and self.is_valid() and self.renew() and self.is_valid():
            status, _ = self.ask("DELETE", "/session", None, self.session)
            if self.expect(204, status, "logout"):
                self.ended = self.ended[-9:] + [self.session]
                self.expect(401, self.ask("GET", "/session", None, self.session)[0], "ended session")

    def is_valid(self):
        """Repeats the question while it is not answered; the session must be there."""
        while True:
            status, _ = self.ask("GET", "/session", None, self.session)
            if 0 < status < 500:
                return self.expect(200, status, "session")

    def renew(self):
        """A token that may have been renewed is taken for 10 s, and gives the current one."""
        deadline = time.monotonic() + 8
        while time.monotonic() < deadline:
            status, value = self.ask("PUT", "/session", {}, self.session)
            if 0 < status < 500:
                if self.expect(200, status, "renewal"):
                    self.session = value["session"], value["token"]
                return status == 200
        return False

    def check(self):
        with self.turn:
            back = [self.ask("GET", "/session", None, session)[0] != 401 for session in self.ended]
            return sum(back), 0


def wait_for_more(clients):
    counts = [client.count for client in clients]
    while any(client.count < count + 20 for client, count in zip(clients, counts)):
        time.sleep(0.01)


def obey(word, book, clients):
    if word == "begin":
        book.begin()
    elif word == "fault":
        book.fault = time.monotonic()
    elif word == "settled":
        book.settled = time.monotonic()
    elif word == "more":
        wait_for_more([client for client in clients if isinstance(client, Writer)])
    elif word == "report":
        return book.report()
    elif word == "check":
        losses = [client.check() for client in clients]
        return "%d %d" % (sum(loss[0] for loss in losses), sum(loss[1] for loss in losses))
    return "done"


def main():
    book = Book()
    port, users = int(sys.argv[1]), sys.argv[2:]
    clients = [Writer(port, user, book) for user in users[1:]] + [Guest(port, users[0], book)]
    for client in clients:
        client.start()
    for line in sys.stdin:
        print(obey(line.strip(), book, clients), flush=True)


main()
