// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Routes.h"

// The names of the files are ours: a path must never be made of what the client sent.
void addFiles(BwaRestGroup& api, const QString& folder)
{
    api.get("/file",
            [folder](const BwaRestCall&) {
                return BwaRestReply::file(folder + "/welcome.txt", "text/plain");
            })
        .says("A file that the web server sends, named by X-Sendfile");
    // The path is one of the web server, which maps /files/ to a folder.
    api.get("/download",
            [](const BwaRestCall&) {
                return BwaRestReply::empty(200)
                    .header("Content-Type", "text/plain")
                    .header("X-Accel-Redirect", "/files/welcome.txt");
            })
        .says("The same, named by X-Accel-Redirect");
}
