// What libbgp_update exports carries this mark; everything else in the library is hidden.
#pragma once

#define BGP_UPDATE_EXPORT __attribute__((visibility("default")))
