// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// A multipart body: whatever is done with the reader, in whatever pieces the body comes, it does
// the same as its literal model and asks the same of its input.

#include "Fuzzing.h"
#include "MultipartBody.h"
#include "support/MultipartComparison.h"

#include <gtest/gtest.h>

namespace {

unsigned int announcedLength(unsigned int size, std::minstd_rand& choices)
{
    switch (below(8, choices)) {
    case 0:
        return size + below(10000, choices);
    case 1:
        return size - std::min(size, below(20, choices));
    case 2:
        return 4294967295U;
    default:
        return size;
    }
}

void compareAtRandom(MultipartComparison& comparison, std::minstd_rand& choices)
{
    const unsigned int sizes[] = {0, 1, 2, 9, 100, 4096, 5000, 4294967295U};
    for (int left = 30, after = 3; left > 0 && after > 0; --left) {
        auto operation = static_cast<int>(below(8, choices));
        if (operation == 1 && comparison.failed()) {
            operation = 0; // it is not defined what skipping does after a failure
        }
        const auto results = comparison.act(operation, sizes[below(8, choices)]);
        ASSERT_EQ(results.first, results.second);
        after -= comparison.isFinished() ? 1 : 0;
    }
}

} // namespace

void fuzz(const QByteArray& input)
{
    std::minstd_rand choices = choicesFor(input);
    const QByteArray boundary = boundaryOf(input);
    const unsigned int step = below(2, choices) == 0 ? 0 : 1 + below(300, choices);
    const unsigned int length = announcedLength(static_cast<unsigned int>(input.size()), choices);

    MultipartComparison comparison(boundary, input, length, step);
    compareAtRandom(comparison, choices);
}
