// Entry of every test program.
#include "tests/support/private_var_tmp.h"

#include <clocale>
#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    setenv("TZ", "UTC", 1);
    // Hosts set whatever locale their user has; every test holds under each (tests/odd).
    setlocale(LC_ALL, "");
    ruk_test::enter_private_var_tmp();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
