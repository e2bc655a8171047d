// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREQUESTLIMITS_H
#define BWAREQUESTLIMITS_H

/**
 * How much of a body BwaCgiRequest::processBodyContent() accepts; 0 means no limit.
 *
 * A body beyond a limit costs no more than reading its bytes. One whose CONTENT_LENGTH is beyond
 * maxBodySize is not even read.
 */
struct BwaRequestLimits {
    unsigned int maxBodySize = 0;   /**< The largest CONTENT_LENGTH, in bytes. */
    unsigned int maxFormFields = 0; /**< Fields of a form; its files are not counted. */
    unsigned int maxParts = 0;      /**< Fields and files of a multipart form together. */
    unsigned int reserved[5] = {};  /**< For limits of later versions; leave it as it is. */
};

#endif
