// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef ROUTES_H
#define ROUTES_H

#include <bwebapi/rest.h>

/** Adds "/echo", "/form" and "/client", which show what a client and the web server have sent. */
void addEcho(BwaRestGroup& api);
/** Adds "/order": fields of several kinds in, JSON out. */
void addOrder(BwaRestGroup& api);
/** Adds "/upload", which measures the files of a form, and keeps none. */
void addUpload(BwaRestGroup& api);
/** Adds "/file" and "/download": the web server sends a file of @a folder itself. */
void addFiles(BwaRestGroup& api, const QString& folder);
/** Adds "/app", a web page that uses the API, and "/page", one made of HTML nodes. */
void addPages(BwaRestGroup& api);
/**
 * Adds "/docs", a page that shows the document of the API. @a rendererFolder has swagger-ui.css and
 * swagger-ui-bundle.js of the npm package swagger-ui-dist; if it is empty, the page only has a link
 * to the document.
 */
void addApiPage(BwaRestGroup& api, const QString& rendererFolder);

#endif
