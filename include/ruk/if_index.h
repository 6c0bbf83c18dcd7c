/*
 * 32-bit interface index: all of it.
 *
 * An IfIndex names one interface of the switch: the type in its top byte, the type's coordinates
 * (slot, port, sub-interface, channel, VLAN, ...) in the 24 bits below.  docs/interface-index.md
 * has the layout of every type.
 *
 *   ruk/if_index_types.h  type codes, error codes, what is asked without knowing the type, platform
 *   ruk/if_index_read.h   readers: the fields of a value of a known type
 *   ruk/if_index_build.h  constructors that take the fields as they are stored, named values
 *   ruk/if_index_cli.h    constructors that take the numbers a user types
 *   ruk/if_index_range.h  counting, indexing and stepping through ranges
 *   ruk/if_index_name.h   names of interfaces and of ranges, and names that a user types
 *   ruk/if_index_fspf.h   FSPF interface numbers and byte order
 */
#ifndef RUK_IF_INDEX_H
#define RUK_IF_INDEX_H

#include "ruk/if_index_build.h"
#include "ruk/if_index_cli.h"
#include "ruk/if_index_fspf.h"
#include "ruk/if_index_name.h"
#include "ruk/if_index_range.h"
#include "ruk/if_index_read.h"
#include "ruk/if_index_types.h"

#endif /* RUK_IF_INDEX_H */
