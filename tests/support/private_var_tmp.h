// A /var/tmp of the process's own, so that tests can run side by side and never meet an Agent of
// the host on its fixed socket paths.
#pragma once

namespace ruk_test
{

// Moves the process there; before anything else, since threads would stay behind.  Where namespaces
// are refused, waits for its turn instead.
void enter_private_var_tmp();

bool has_private_var_tmp();

} // namespace ruk_test
