// Whether this test process has a /var/tmp of its own; see test_main.cpp.
#pragma once

namespace ruk_test
{

bool has_private_var_tmp();

} // namespace ruk_test
