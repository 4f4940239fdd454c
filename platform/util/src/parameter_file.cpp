#include <charconv>
#include <utility>

#include "guard.h"
#include "parameter_error.h"
#include "parameter_node.h"
#include "parameter_reader.h"
#include "parameter_source.h"

using namespace orvane::util;

const PfEntry *Pf::find(std::string_view key) const
{
    if (kind == PFARRAY) {
        const auto found = keys.find(key);
        return found == keys.end() ? nullptr : &entries[found->second];
    }
    size_t index = 0;
    const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), index);
    const bool whole = error == std::errc() && end == key.data() + key.size();
    return whole && index < entries.size() ? &entries[index] : nullptr;
}

namespace {

template <typename Read>
int read_into(Pf **pf, const char *call, Read &&read)
{
    if (!pf) {
        elog_log("%s: expected a place for the result, got a null pointer", call);
        return -1;
    }
    *pf = nullptr;
    return guarded(call, -1, [&] {
        try {
            *pf = read().release();
            return 0;
        } catch (const ParameterError &error) {
            elog_log("%s", error.what());
            return -1;
        }
    });
}

const PfEntry *entry_under(const Pf *pf, const char *key)
{
    return pf && key ? pf->find(key) : nullptr;
}

int answer_place(const PfPlace &place, int64_t *line, int64_t *column)
{
    if (line)
        *line = place.line;
    if (column)
        *column = place.column;
    return 0;
}

} // namespace

int pfread(const char *path, Pf **pf)
{
    return read_into(pf, "pfread", [&] {
        if (!path)
            throw ParameterError("pfread", "expected a path, got a null pointer");
        return read_parameters(parameter_source(path), path);
    });
}

int pfparse(const char *text, uint64_t length, const char *name, Pf **pf)
{
    return read_into(pf, "pfparse", [&] {
        const std::string file = name ? name : "parameters";
        if (!text && length > 0)
            throw ParameterError(file, "expected a text, got a null pointer");
        return read_parameters(text ? std::string_view(text, length) : std::string_view(), file);
    });
}

void pffree(Pf *pf)
{
    if (pf && pf->root)
        delete pf;
}

Tbl *pfkeys(const Pf *pf)
{
    if (!pf || pf->kind != PFARRAY)
        return nullptr;
    Tbl *keys = newtbl(static_cast<int64_t>(pf->entries.size()));
    if (!keys)
        return nullptr;
    for (const PfEntry &entry : pf->entries) {
        if (pushtbl(keys, const_cast<char *>(entry.key->c_str())) < 0) {
            freetbl(keys, nullptr);
            return nullptr;
        }
    }
    return keys;
}

int pfget(const Pf *pf, const char *key, PfValue *value)
{
    const PfEntry *entry = entry_under(pf, key);
    if (value)
        *value = {entry && !entry->node ? entry->text.c_str() : nullptr, entry ? entry->node.get() : nullptr};
    if (!entry)
        return -1;
    return entry->node ? entry->node->kind : PFSTRING;
}

int64_t pfmaxtbl(const Pf *pf)
{
    return pf ? static_cast<int64_t>(pf->entries.size()) : 0;
}

int pfwhere(const Pf *pf, const char *key, int64_t *line, int64_t *column)
{
    if (pf && !key)
        return answer_place(pf->place, line, column);
    const PfEntry *entry = entry_under(pf, key);
    return entry ? answer_place(entry->place, line, column) : -1;
}

int pfwherekey(const Pf *pf, const char *key, int64_t *line, int64_t *column)
{
    const PfEntry *entry = entry_under(pf, key);
    if (!entry)
        return -1;
    return answer_place(entry->key ? entry->key_place : entry->place, line, column);
}

const char *pfname(const Pf *pf)
{
    return pf ? pf->file->c_str() : nullptr;
}
