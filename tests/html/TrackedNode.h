// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef TRACKEDNODE_H
#define TRACKEDNODE_H

#include "html/BwaAbstractHtmlNode.h"

#include <ostream>
#include <string>
#include <vector>

/**
 * A node that renders its name and notes in a log what happens to it: "clone a", "delete a".
 *
 * The clone of "a" is named "a'".
 */
class TrackedNode : public BwaAbstractHtmlNode
{
public:
    using Log = std::vector<std::string>;

    /** @a log is not owned and must outlive the node and its clones. */
    TrackedNode(const std::string& name, Log* log)
        : m_name(name)
        , m_log(log)
    {
    }
    ~TrackedNode() override { m_log->push_back("delete " + m_name); }
    TrackedNode(const TrackedNode&) = delete;
    TrackedNode& operator=(const TrackedNode&) = delete;

    void render(std::ostream& stream) const override { stream << m_name; }
    TrackedNode* clone() const override
    {
        m_log->push_back("clone " + m_name);
        return new TrackedNode(m_name + "'", m_log);
    }

private:
    std::string m_name;
    Log* m_log; // not owned
};

#endif
