// show all and show last in paged mode: one page a run.
#pragma once

#include <cstdint>

// One page of show all.  Its cookie is the number of the last entry shown.
int32_t show_all_page(const char *arguments);

// One page of show last.  Its cookie is how many entries have been shown.
int32_t show_last_page(const char *arguments);
