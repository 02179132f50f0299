// The name of JSON, for headers that do not look inside.
#ifndef LUMASCAN_JSON_FWD_H
#define LUMASCAN_JSON_FWD_H

#include <nlohmann/json_fwd.hpp>

using Json = nlohmann::ordered_json;  // keys in the order in which they were added

#endif
