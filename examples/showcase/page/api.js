// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Without the renderer the page stays what it is: a link to the document.
window.SwaggerUIBundle?.({
  dom_id: "#api",
  url: "openapi.json",
  validatorUrl: null, // no other host learns anything
});
