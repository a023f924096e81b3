#include "python/definition.h"

#include <algorithm>
#include <deque>

#include "core/engine/never_destroyed.h"

namespace zvr::python {

Raises::Entry::Entry(const Definition& definition) : texts(definition.raises) {}

void Raises::add(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) {
        for (const std::string& text : entry.texts) {
            if (std::ranges::find(*this, text) == end()) push_back(text);
        }
    }
}

const Definition* keep(Definition definition) {
    static auto& kept = neverDestroyed<std::deque<Definition>>();
    return &kept.emplace_back(std::move(definition));
}

}  // namespace zvr::python
