// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Gives the library an input of a hostile form and size, and tells what that took. How its costs
// grow is counted from outside, by check-time and check-tokens.

#include "hostile/Forms.h"
#include "hostile/Measuring.h"

#include <QByteArray>

#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>

namespace {

const char* const usage = "usage: hostile GROUP\n"
                          "       hostile FORM SIZE [MOST-BYTES-OF-MEMORY-FOR-EACH-OF-THE-SIZE]\n";

QList<Form> allForms()
{
    return bodyForms() + textForms() + jsonForms() + tokenForms();
}

int listGroup(const char* group)
{
    int count = 0;
    for (const Form& form : allForms()) {
        if (std::strcmp(form.group, group) == 0) {
            std::cout << form.name << std::endl;
            ++count;
        }
    }
    return count > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

// With no limit, 0, any memory is allowed.
int run(const Form& form, int size, double limit)
{
    form.run(size);
    const Cost cost = measuredCost();
    const double bytesEach = static_cast<double>(cost.bytes) / size;
    std::cout << form.name << " " << size << ": " << cost.milliseconds << " ms, " << cost.bytes
              << " bytes, " << bytesEach << " for each" << std::endl;
    return limit == 0 || bytesEach <= limit ? EXIT_SUCCESS : EXIT_FAILURE;
}

int runNamed(const char* name, int size, double limit)
{
    for (const Form& form : allForms()) {
        if (std::strcmp(form.name, name) == 0) {
            return run(form, size, limit);
        }
    }
    std::cerr << "no form " << name << std::endl;
    return EXIT_FAILURE;
}

} // namespace

int main(int argumentCount, char* arguments[])
{
    try {
        if (argumentCount == 2) {
            return listGroup(arguments[1]);
        }
        const int size = argumentCount > 2 ? QByteArray(arguments[2]).toInt() : 0;
        if (size > 0) {
            return runNamed(arguments[1], size,
                            argumentCount > 3 ? QByteArray(arguments[3]).toDouble() : 0);
        }
        std::cerr << usage;
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << std::endl;
    }
    return EXIT_FAILURE;
}
