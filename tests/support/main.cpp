#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char** argv) {
    // As an application does that speaks its user's language: the suite also runs under a locale
    // with a decimal comma.
    std::setlocale(LC_ALL, "");
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
