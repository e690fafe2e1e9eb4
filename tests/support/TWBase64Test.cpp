#include "support/TWBase64.h"

#include <gtest/gtest.h>

TEST(TWBase64, EncodesAndDecodes)
{
    using namespace std::string_literals;
    const std::pair<std::string, const char*> cases[] = { { "", "" }, { "f", "Zg==" }, { "fo", "Zm8=" },
        { "foo", "Zm9v" }, { "foob", "Zm9vYg==" }, { "\0\xff\xfe\x3e"s, "AP/+Pg==" } };
    for (const auto& [bytes, text] : cases) {
        std::string encoded = "before ";
        TWBase64::append(bytes, encoded);
        EXPECT_EQ(encoded, "before " + std::string(text));
        EXPECT_EQ(TWBase64::decode(text), bytes);
    }
    EXPECT_EQ(TWBase64::decode(" Z\tm9\r\nv"), "foo");
    for (const char* wrong : { "Zg", "Zg=", "Zg===", "Z===", "====", "Zm=v", "Zg==Zg==", "Zm9v!", "Zm-v" })
        EXPECT_FALSE(TWBase64::decode(wrong)) << wrong;
}
