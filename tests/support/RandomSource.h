// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef RANDOMSOURCE_H
#define RANDOMSOURCE_H

#include <QByteArray>
#include <QList>
#include <QString>

#include <iostream>
#include <random>

/**
 * The random choices of one test.
 *
 * The seed is printed; BWA_TEST_SEED=<seed> repeats a run, BWA_TEST_EFFORT=<n> makes every test
 * try n times as many inputs.
 */
class RandomSource
{
public:
    RandomSource()
        : m_seed(qEnvironmentVariableIsSet("BWA_TEST_SEED") ? qgetenv("BWA_TEST_SEED").toUInt()
                                                            : std::random_device()())
        , m_engine(m_seed)
    {
        std::cout << "BWA_TEST_SEED=" << m_seed << std::endl;
    }

    static int rounds(int usual)
    {
        const int effort = qgetenv("BWA_TEST_EFFORT").toInt();
        return effort > 0 ? usual * effort : usual;
    }

    /** A number from 0 to @a limit - 1. */
    int below(int limit) { return static_cast<int>(m_engine() % static_cast<unsigned int>(limit)); }

    bool oneIn(int cases) { return below(cases) == 0; }

    template <typename Element>
    const Element& oneOf(const QList<Element>& elements)
    {
        return elements.at(below(elements.size()));
    }

    /** Up to @a limit - 1 characters of @a alphabet. */
    QString text(const QString& alphabet, int limit)
    {
        QString result;
        for (int left = below(limit); left > 0; --left) {
            result.append(alphabet.at(below(alphabet.size())));
        }
        return result;
    }

private:
    unsigned int m_seed;
    std::mt19937 m_engine;
};

#endif
