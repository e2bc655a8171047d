// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The page speaks to the API as any client does. Who is logged in is known by two cookies that no
// script can read. What people typed goes into the page as text and never as HTML.

const pollInterval = 2000; // ms between two looks at the statistics

const byId = (id) => document.getElementById(id);

let renewal; // the timer that renews the token

// --- The API ---

class Refusal extends Error {
  constructor(status) {
    super(`The server answered with ${status}.`);
    this.status = status;
  }
}

// Paths are relative to the folder of the page, which is that of the API.
async function call(method, path, body) {
  const options = { method };
  if (body) {
    options.headers = { "Content-Type": "application/json" };
    options.body = JSON.stringify(body);
  }
  const reply = await fetch(path, options);
  if (!reply.ok) {
    throw new Refusal(reply.status);
  }
  return reply.status === 204 ? null : reply.json();
}

// fetch() cannot tell how far an upload is.
function sendFile(file, showProgress) {
  const form = new FormData();
  form.append("file", file);
  return new Promise((resolve, reject) => {
    const request = new XMLHttpRequest();
    request.open("POST", "upload");
    request.upload.onprogress = (event) => showProgress(event.loaded / event.total);
    request.onload = () => {
      if (request.status === 200) {
        resolve(JSON.parse(request.responseText).files[0]);
      } else {
        reject(new Refusal(request.status));
      }
    };
    request.onerror = () => reject(new Error("The upload was cut off."));
    request.send(form);
  });
}

// --- Messages ---

function show(text, kind = "success") {
  const message = byId("message");
  message.className = kind;
  message.textContent = text;
}

// Runs what the user asked for. The button rests meanwhile, so that nothing is sent twice; it is
// not disabled, because that would take the focus from it.
async function attempt(button, action) {
  if (button.ariaDisabled) {
    return;
  }
  button.ariaDisabled = "true";
  try {
    await action();
  } catch (error) {
    explain(error);
  } finally {
    button.ariaDisabled = null;
  }
}

function explain(error) {
  if (error.status === 401) {
    showLogin();
    show("The session has ended. Please log in again.", "error");
  } else if (error.status === 409) {
    show("There is no room for more notes. Please delete some.", "error");
  } else if (error.status === 429 || error.status === 503) {
    show("There are too many logins just now. Please try again in a minute.", "error");
  } else if (error.status === 413) {
    show("This is more than the server takes.", "error");
  } else if (error instanceof TypeError) {
    show("The server cannot be reached.", "error");
  } else {
    show(error.message, "error");
  }
}

// --- The session ---

function showLogin() {
  clearTimeout(renewal);
  byId("note-list").replaceChildren();
  byId("notes").hidden = true;
  byId("account").hidden = true;
  byId("login").hidden = false;
  byId("user").focus();
}

async function begin(session) {
  byId("user-name").textContent = session.user;
  byId("login").hidden = true;
  byId("account").hidden = false;
  byId("notes").hidden = false;
  renewLater(session);
  showNotes(await allNotes());
}

function renewLater(session) {
  renewal = setTimeout(async () => {
    try {
      renewLater(await call("PUT", "session"));
    } catch (error) {
      explain(error);
    }
  }, session.expiresIn * 500);
}

async function logIn() {
  const user = byId("user").value;
  const password = byId("password").value;
  byId("password").value = "";
  try {
    const session = await call("POST", "session", { user, password });
    await begin(session);
    show(`Welcome, ${session.user}.`);
    byId("note-title").focus();
  } catch (error) {
    if (error.status !== 403) {
      throw error;
    }
    show("This user and this password do not belong together.", "error");
    byId("password").focus();
  }
}

async function logOut() {
  await call("DELETE", "session");
  showLogin();
  show("You are logged out.");
}

// A session of an earlier visit is renewed; without one the API refuses.
async function resume() {
  try {
    await begin(await call("PUT", "session"));
  } catch (error) {
    showLogin();
    if (error.status !== 401) {
      explain(error);
    }
  }
}

// --- Notes ---

function newElement(tagName, text) {
  const element = document.createElement(tagName);
  element.textContent = text;
  return element;
}

function noteItem(note) {
  const item = newElement("li", "");
  const content = newElement("div", "");
  const remove = newElement("button", "Delete");
  remove.type = "button";
  remove.setAttribute("aria-label", `Delete ${note.title}`);
  remove.addEventListener("click", () => attempt(remove, () => deleteNote(note, item)));
  content.append(newElement("h3", note.title), newElement("p", note.text));
  item.append(content, remove);
  return item;
}

// The API lists so many at a time; behind the last note there are none.
async function allNotes() {
  const notes = [];
  let page;
  do {
    page = await call("GET", `notes?after=${notes.at(-1)?.id ?? 0}`);
    notes.push(...page);
  } while (page.length > 0);
  return notes;
}

function showNotes(notes) {
  byId("note-list").replaceChildren(...notes.map(noteItem));
  showWhetherEmpty();
}

function showWhetherEmpty() {
  byId("no-notes").hidden = byId("note-list").hasChildNodes();
}

async function addNote() {
  const note = { title: byId("note-title").value, text: byId("note-text").value };
  byId("note-list").append(noteItem(await call("POST", "notes", note)));
  showWhetherEmpty();
  byId("note-form").reset();
  byId("note-title").focus();
  show(`Added ${note.title}.`);
}

// The focus goes to a neighbour: with its button it would be lost.
async function deleteNote(note, item) {
  await call("DELETE", `notes/${note.id}`);
  const neighbour = item.nextElementSibling ?? item.previousElementSibling;
  item.remove();
  showWhetherEmpty();
  (neighbour?.querySelector("button") ?? byId("note-title")).focus();
  show(`Deleted ${note.title}.`);
}

// --- Upload ---

async function upload() {
  byId("upload-result").hidden = true;
  byId("progress").value = 0;
  const file = await sendFile(byId("file").files[0], (part) => {
    byId("progress").value = Math.round(100 * part);
  });
  byId("upload-name").textContent = file.name;
  byId("upload-size").textContent = `${file.size.toLocaleString("en")} bytes`;
  byId("upload-digest").textContent = file.sha256;
  byId("upload-result").hidden = false;
  show(`Uploaded ${file.name}.`);
}

// --- Statistics ---

const sum = (numbers) => numbers.reduce((total, number) => total + number, 0);

// The bars of one kind as one path: it starts where the bars of the kinds before it end.
function bars(seconds, kind, scale) {
  return seconds
    .map((second, x) => {
      const bottom = 20 - sum(second.slice(0, kind)) * scale;
      return second[kind] ? `M${x + 0.1} ${bottom}h.8v${-second[kind] * scale}h-.8z` : "";
    })
    .join("");
}

function showChart(seconds) {
  const totals = seconds.map(sum);
  const peak = Math.max(...totals);
  const top = Math.max(5, peak);
  ["succeeded", "refused", "failed"].forEach((name, kind) => {
    byId(`chart-${name}`).setAttribute("d", bars(seconds, kind, 20 / top));
  });
  byId("chart-top").textContent = `${top} per second`;
  byId("chart-summary").textContent =
    `${sum(totals)} requests in the last minute, at most ${peak} in a second.`;
}

function kindOf(status) {
  return status < 400 ? "succeeded" : status < 500 ? "refused" : "failed";
}

function statusRow([status, count]) {
  const row = newElement("tr", "");
  const heading = newElement("th", "");
  const key = newElement("span", "");
  key.className = `key ${kindOf(Number(status))}`;
  heading.scope = "row";
  heading.append(key, `${status} ${kindOf(Number(status))}`);
  row.append(heading, newElement("td", count));
  return row;
}

async function poll() {
  if (!document.hidden) {
    try {
      const statistics = await call("GET", "statistics");
      showChart(statistics.seconds);
      byId("statuses").replaceChildren(...Object.entries(statistics.statuses).map(statusRow));
    } catch (error) {
      if (error.status === 404) {
        byId("statistics").hidden = true; // this server shows none
        return;
      }
      byId("chart-summary").textContent = "The server cannot be reached.";
    }
  }
  setTimeout(poll, pollInterval);
}

// --- The start ---

function onSubmit(formId, action) {
  byId(formId).addEventListener("submit", (event) => {
    event.preventDefault();
    attempt(event.submitter, action);
  });
}

onSubmit("login-form", logIn);
onSubmit("note-form", addNote);
onSubmit("upload-form", upload);
byId("log-out").addEventListener("click", (event) => attempt(event.target, logOut));
resume();
poll();
