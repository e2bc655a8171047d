// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREQUESTLIMITS_H
#define BWAREQUESTLIMITS_H

/**
 * What BwaCgiRequest::processBodyContent() takes of a body at most; 0 is no limit.
 *
 * A body beyond a limit fails before it costs more than reading its bytes, one that is announced
 * too large before any is read.
 */
struct BwaRequestLimits {
    unsigned int maxBodySize = 0;   /**< Bytes, of CONTENT_LENGTH. */
    unsigned int maxFormFields = 0; /**< Of a form, files not counted. */
    unsigned int maxParts = 0;      /**< Fields and files of a multipart form. */
    unsigned int reserved[5] = {};  /**< Limits of later versions; to be left alone. */
};

#endif
