#pragma once

#include <nlohmann/json.hpp>

#include "words/message.h"

namespace words {

/// [{"at", "size", "name", "value", "meaning"}] of a message's fields.
inline nlohmann::json fieldsJson(const Message& message) {
    nlohmann::json fields = nlohmann::json::array();
    for (const Field& field : message.fields) {
        fields.push_back({{"at", field.at},
                          {"size", field.size},
                          {"name", field.name},
                          {"value", field.value},
                          {"meaning", field.meaning}});
    }
    return fields;
}

}  // namespace words
