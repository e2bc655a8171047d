// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The showcase's web page in Chromium, as people use it. PAGE is its address; with SCREENSHOTS, a
// folder, pictures of it are left there.

import assert from "node:assert/strict";
import { after, afterEach, before, beforeEach, test } from "node:test";
import axe from "axe-core";
import { chromium } from "playwright-core";

const address = process.env.PAGE;
const deadline = 20000; // ms; logging in is made to be slow
const phone = { width: 390, height: 844 };

let browser;
let page;
let complaints; // what the browser's console said, and what came from elsewhere

before(async () => {
  browser = await chromium.launch({
    executablePath: "/usr/bin/chromium",
    args: [
      "--no-sandbox",
      "--disable-gpu",
      "--disable-quic",
      "--no-first-run",
      "--disable-background-networking",
      "--disable-component-update",
      "--disable-sync",
    ],
  });
});

after(() => browser?.close());

beforeEach(() => open());

afterEach(async () => {
  await page.context().close();
  assert.deepEqual(complaints, []);
});

// Opens the page as somebody who was never there.
async function open(options = {}) {
  await page?.context().close();
  page = await (await browser.newContext({ locale: "en-GB", ...options })).newPage();
  page.setDefaultTimeout(deadline);
  complaints = [];
  page.on("pageerror", (error) => complaints.push(error.message));
  page.on("console", (line) => {
    // Refusals are logged by the browser itself; they are part of the API.
    if (line.type() === "error" && !/status of 4\d\d/.test(line.text())) {
      complaints.push(line.text());
    }
  });
  page.on("request", (request) => {
    const isFromElsewhere = !request.url().startsWith(new URL("/api/", address).href);
    if (isFromElsewhere && !request.url().startsWith("data:")) {
      complaints.push(request.url());
    }
  });
  await page.goto(address);
  await page.locator("#login").waitFor();
}

async function logIn() {
  await page.getByLabel("User").fill("demo");
  await page.getByLabel("Password").fill("tea and biscuits");
  await page.getByRole("button", { name: "Log in" }).click();
  await page.getByText("Welcome, demo.").waitFor();
}

async function addNote(title, text = "") {
  await page.getByLabel("Title").fill(title);
  await page.getByLabel("Text").fill(text);
  await page.getByRole("button", { name: "Add note" }).click();
  await said(`Added ${title}.`);
}

async function deleteNote(title) {
  await page.getByRole("button", { name: `Delete ${title}`, exact: true }).click();
  await said(`Deleted ${title}.`);
}

const said = (text) => page.getByRole("status").getByText(text, { exact: true }).waitFor();

const tokenCookie = async () =>
  (await page.context().cookies()).find((cookie) => cookie.name === "SESSION-TOKEN").value;

const focused = () => page.evaluate(() => document.activeElement.ariaLabel ?? document.activeElement.id);

const overflow = () =>
  page.evaluate(() => document.documentElement.scrollWidth - document.documentElement.clientWidth);

async function violations() {
  await page.evaluate(axe.source);
  const { violations } = await page.evaluate(() => window.axe.run());
  return violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).join(", ")}`);
}

async function takePicture(name) {
  if (process.env.SCREENSHOTS) {
    await page.screenshot({ path: `${process.env.SCREENSHOTS}/${name}.png`, fullPage: true });
  }
}

// The number in the row of a status; 0 without a row.
const countedReplies = (status) =>
  page
    .getByRole("row", { name: `${status} ` })
    .getByRole("cell")
    .allTextContents()
    .then(([count = "0"]) => Number(count));

async function eventually(condition) {
  const end = Date.now() + deadline;
  while (!(await condition())) {
    assert.ok(Date.now() < end, `in time: ${condition}`);
    await page.evaluate(() => new Promise(requestAnimationFrame));
  }
}

test("WhenOnlyTheKeyboardIsUsedLogsInAndOut", async () => {
  assert.equal(await focused(), "user");
  await page.keyboard.type("demo");
  await page.keyboard.press("Tab");
  await page.keyboard.type("tea and biscuits");
  await page.keyboard.press("Enter");
  await said("Welcome, demo.");
  assert.equal(await focused(), "note-title");

  await page.keyboard.press("Shift+Tab");
  assert.equal(await focused(), "log-out");
  await page.keyboard.press("Enter");
  await said("You are logged out.");
  assert.equal(await focused(), "user");
});

test("GivenWrongPasswordSaysSoAndAsksAgain", async () => {
  await page.getByLabel("User").fill("demo");
  await page.getByLabel("Password").fill("coffee");
  await page.keyboard.press("Enter");

  await said("This user and this password do not belong together.");
  assert.equal(await focused(), "password");
  assert.equal(await page.getByLabel("Password").inputValue(), "");
  assert.equal(await page.locator("#notes").isVisible(), false);
});

test("GivenSessionCookiesNoScriptReadsThem", async () => {
  await logIn();

  const cookies = await page.context().cookies();
  assert.deepEqual(cookies.map((cookie) => cookie.httpOnly), [true, true]);
  assert.equal(await page.evaluate(() => document.cookie), "");
});

test("WhenReloadedTheSessionGoesOn", async () => {
  await logIn();

  await page.reload();

  await page.locator("#notes").waitFor();
  assert.equal(await page.locator("#user-name").textContent(), "demo");
});

test("WhenTheSessionEndsAsksForALogin", async () => {
  await logIn();
  await page.context().clearCookies();

  await page.getByLabel("Title").fill("Too late");
  await page.keyboard.press("Enter");

  await said("The session has ended. Please log in again.");
  assert.equal(await focused(), "user");
  assert.equal(await page.locator("#notes").isVisible(), false);
});

test("WhenHalfOfItsLifetimeIsOverRenewsTheToken", async () => {
  await page.clock.install();
  await logIn();
  const renewal = page.waitForResponse((reply) => reply.request().method() === "PUT");
  const token = await tokenCookie();

  await page.clock.fastForward("05:00");

  assert.equal((await renewal).status(), 200);
  assert.notEqual(await tokenCookie(), token);
});

test("GivenMarkupInANoteShowsItAsText", async () => {
  const markup = `<img src="x" onerror="alert(1)"> & "tea"`;
  await logIn();

  await addNote(markup, "käse\n<b>cake</b>");

  const note = page.getByRole("listitem").last();
  assert.equal(await note.getByRole("heading").textContent(), markup);
  assert.equal(await note.getByRole("paragraph").textContent(), "käse\n<b>cake</b>");
  await deleteNote(markup);
});

test("WhenANoteIsDeletedTheFocusGoesToItsNeighbour", async () => {
  await logIn();
  await addNote("First");
  await addNote("Second");

  await page.getByRole("button", { name: "Delete First" }).focus();
  await page.keyboard.press("Enter");
  await said("Deleted First.");
  assert.equal(await focused(), "Delete Second");
  await page.keyboard.press("Enter");
  await said("Deleted Second.");
  assert.equal(await focused(), "note-title");
  await page.getByText("There are no notes yet.").waitFor();
});

test("GivenSeveralPagesOfNotesShowsThemAll", async () => {
  await page.route("**/notes?after=*", (route) => {
    const id = Number(new URL(route.request().url()).searchParams.get("after")) + 1;
    return route.fulfill({ json: id > 3 ? [] : [{ id, title: `Note ${id}`, text: "" }] });
  });
  await logIn();

  assert.deepEqual(await page.getByRole("listitem").getByRole("heading").allTextContents(), [
    "Note 1",
    "Note 2",
    "Note 3",
  ]);
});

test("GivenTheMostNotesSaysThatThereIsNoRoom", async () => {
  await logIn();
  await page.route("**/notes", (route) => route.fulfill({ status: 409 }));

  await page.getByLabel("Title").fill("One too many");
  await page.keyboard.press("Enter");

  await said("There is no room for more notes. Please delete some.");
  assert.equal(await page.getByLabel("Title").inputValue(), "One too many");
});

test("GivenTooManyLoginsAsksToTryAgain", async () => {
  await page.route("**/session", (route) => route.fulfill({ status: 429 }));

  await page.getByLabel("User").fill("demo");
  await page.getByLabel("Password").fill("tea and biscuits");
  await page.keyboard.press("Enter");

  await said("There are too many logins just now. Please try again in a minute.");
});

test("GivenAServerWithoutStatisticsShowsNone", async () => {
  await page.route("**/statistics", (route) => route.fulfill({ status: 404 }));

  await page.reload();

  await page.locator("#statistics").waitFor({ state: "hidden" });
});

test("WhenAFileIsUploadedTheBarGrowsAndTheDigestIsShown", async () => {
  const network = await page.context().newCDPSession(page);
  await network.send("Network.emulateNetworkConditions", {
    offline: false,
    latency: 0,
    downloadThroughput: -1,
    uploadThroughput: 4e6, // bytes a second
  });
  await page.evaluate(() => {
    const bar = document.getElementById("progress");
    window.progress = [];
    new MutationObserver(() => window.progress.push(bar.value)).observe(bar, { attributes: true });
  });

  await page.getByLabel("File").setInputFiles({
    name: "zeros.bin",
    mimeType: "application/octet-stream",
    buffer: Buffer.alloc(3000000),
  });
  await page.getByRole("button", { name: "Upload" }).click();
  await said("Uploaded zeros.bin.");

  const progress = await page.evaluate(() => window.progress);
  assert.ok(progress.some((value) => value > 0 && value < 100), `steps: ${progress}`);
  assert.equal(progress.at(-1), 100);
  assert.equal(await page.locator("#upload-size").textContent(), "3,000,000 bytes");
  assert.equal(
    await page.locator("#upload-digest").textContent(),
    "35bce4eae54ec8e6cc2868baa8d157914d6ae2858811b4cc0c078c94460fa26f",
  );
});

test("GivenAFileThatIsTooLargeSaysSo", async () => {
  await page.getByLabel("File").setInputFiles({
    name: "zeros.bin",
    mimeType: "application/octet-stream",
    buffer: Buffer.alloc(17000000),
  });
  await page.getByRole("button", { name: "Upload" }).click();

  await said("This is more than the server takes.");
  assert.equal(await page.locator("#upload-result").isVisible(), false);
});

test("GivenNoServerSaysSo", async () => {
  await logIn();
  await page.context().setOffline(true);

  await page.getByLabel("Title").fill("Lost");
  await page.keyboard.press("Enter");

  await said("The server cannot be reached.");
  assert.equal(await page.getByLabel("Title").inputValue(), "Lost");
  await page.locator("#chart-summary").getByText("The server cannot be reached.").waitFor();
  complaints = complaints.filter((complaint) => !/ERR_INTERNET_DISCONNECTED/.test(complaint));
});

test("GivenNoServerAnUploadEndsWithAMessage", async () => {
  await page.context().setOffline(true);
  await page.getByLabel("File").setInputFiles({
    name: "a.txt",
    mimeType: "text/plain",
    buffer: Buffer.from("a"),
  });
  await page.getByRole("button", { name: "Upload" }).click();

  await said("The upload was cut off.");
  complaints = complaints.filter((complaint) => !/ERR_INTERNET_DISCONNECTED/.test(complaint));
});

test("WhenRequestsAreMadeTheChartCountsThem", async () => {
  await page.getByText(/^\d+ requests in the last minute/).waitFor();
  const refusals = await countedReplies(404);

  for (let i = 0; i < 5; ++i) {
    await page.request.get(new URL("nowhere", address).href);
  }

  await eventually(async () => (await countedReplies(404)) >= refusals + 5);
  assert.match(await page.locator("#chart-refused").getAttribute("d"), /^M[\d.]+ [\d.]+h/);
});

test("GivenTheDocumentOfTheApiItsPageListsEachOperation", async () => {
  const document = await (await page.request.get(new URL("openapi.json", address).href)).json();
  const described = Object.entries(document.paths).flatMap(([path, item]) =>
    Object.keys(item).map((method) => `${method.toUpperCase()} ${path}`),
  );

  await page.getByRole("link", { name: "The API" }).click();
  await page.locator(".opblock").first().waitFor();

  const shown = await page
    .locator(".opblock")
    .evaluateAll((blocks) =>
      blocks.map((block) =>
        [".opblock-summary-method", ".opblock-summary-path"]
          .map((part) => block.querySelector(part).textContent.replace(/\u200b/g, ""))
          .join(" "),
      ),
    );
  assert.ok(described.length > 15, `operations: ${described}`);
  assert.deepEqual(shown.sort(), described.sort());
  await takePicture("api");
});

for (const scheme of ["Light", "Dark"]) {
  test(`Given${scheme}ColoursIsAccessible`, async () => {
    await open({ colorScheme: scheme.toLowerCase() });
    assert.deepEqual(await violations(), []);

    await logIn();
    await addNote("Buy tea", "green, and the black one from the corner shop");
    await addNote("Bake bread");
    assert.deepEqual(await violations(), []);
    await takePicture(`desktop-${scheme.toLowerCase()}`);
    await deleteNote("Buy tea");
    await deleteNote("Bake bread");
  });
}

test("GivenAPhoneNothingIsWiderThanIt", async () => {
  await open({ viewport: phone, hasTouch: true, isMobile: true });
  assert.equal(await overflow(), 0);
  await takePicture("phone-login");

  await logIn();
  await addNote("Awordthatislongerthanthescreeniswideandhasnoplacetobreak".repeat(2));
  assert.equal(await overflow(), 0);
  await takePicture("phone-notes");
  await page.getByRole("button", { name: /^Delete A/ }).click();
});
