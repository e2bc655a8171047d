// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaAbstractCgiStreamableElement.h"

#include "support/Rendered.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <sstream>
#include <type_traits>

namespace {

class Word : public BwaAbstractCgiStreamableElement
{
public:
    explicit Word(const char* text, bool* destroyed = nullptr)
        : m_text(text)
        , m_destroyed(destroyed)
    {
    }
    ~Word() override
    {
        if (m_destroyed != nullptr) {
            *m_destroyed = true;
        }
    }
    Word(const Word&) = delete;
    Word& operator=(const Word&) = delete;

    void render(std::ostream& stream) const override { stream << m_text; }

private:
    const char* m_text;
    bool* m_destroyed; // not owned
};

} // namespace

TEST(BwaAbstractCgiStreamableElement, CanOnlyBeDerivedFrom)
{
    EXPECT_TRUE(std::is_abstract_v<BwaAbstractCgiStreamableElement>);
    EXPECT_TRUE(std::has_virtual_destructor_v<BwaAbstractCgiStreamableElement>);
}

TEST(BwaAbstractCgiStreamableElement, WhenStreamedRendersAsItsOwnClassDoes)
{
    const Word word("body");
    const BwaAbstractCgiStreamableElement& element = word;

    EXPECT_EQ(rendered(element), "body");
}

TEST(BwaAbstractCgiStreamableElement, WhenStreamedReturnsTheSameStream)
{
    std::ostringstream stream;

    std::ostream& returned = stream << Word("a");

    EXPECT_EQ(&returned, &stream);
}

TEST(BwaAbstractCgiStreamableElement, WhenStreamedInAChainKeepsTheOrder)
{
    std::ostringstream stream;

    stream << Word("a") << "-" << Word("b") << '.';

    EXPECT_EQ(stream.str(), "a-b.");
}

TEST(BwaAbstractCgiStreamableElement, WhenStreamHasFailedIsRenderedAllTheSame)
{
    class Reviver : public BwaAbstractCgiStreamableElement
    {
    public:
        void render(std::ostream& stream) const override
        {
            stream.clear();
            stream << "back";
        }
    };
    std::ostringstream stream;
    stream.setstate(std::ios_base::failbit);

    stream << Reviver();

    EXPECT_EQ(stream.str(), "back");
}

TEST(BwaAbstractCgiStreamableElement, WhenDeletedThroughTheBaseDestroysTheWhole)
{
    bool destroyed = false;
    std::unique_ptr<BwaAbstractCgiStreamableElement> element(new Word("a", &destroyed));

    element.reset();

    EXPECT_TRUE(destroyed);
}
