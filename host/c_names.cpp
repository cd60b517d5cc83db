// The C interface of the names of modes, views and sizes: rows of the one table.
#include <span>

#include "host/c_guard.h"
#include "records/names.h"

using veltara::host::kNullArgument;

namespace {

std::span<const veltara::EnumName> Table(int32_t table) {
    if (table < 0 || table >= veltara::kNameTableCount) return {};
    return veltara::Names(static_cast<veltara::NameTable>(table));
}

}  // namespace

int32_t vt_name_count(int32_t table, int32_t* count) {
    if (count == nullptr) return kNullArgument;
    if (Table(table).empty()) return VT_ERR_SUBSCRIPT;
    *count = static_cast<int32_t>(Table(table).size());
    return VT_OK;
}

int32_t vt_name(int32_t table, int32_t row, vt_Name* out) {
    if (out == nullptr) return kNullArgument;
    const std::span<const veltara::EnumName> rows = Table(table);
    if (row < 0 || static_cast<size_t>(row) >= rows.size()) return VT_ERR_SUBSCRIPT;
    const veltara::EnumName& n = rows[static_cast<size_t>(row)];
    *out = vt_Name{n.value, n.key, n.title, n.label};
    return VT_OK;
}
