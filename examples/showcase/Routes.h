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

#endif
