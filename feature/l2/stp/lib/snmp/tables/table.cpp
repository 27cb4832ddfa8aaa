#include "tables/table.h"

#include <algorithm>

namespace stpsnmp::tables {

RowRequest::RowRequest(const oid *column, size_t column_length, oid *name, size_t *length, int exact)
    : column_(column), column_length_(column_length), name_(name), length_(length), exact_(exact), arcs_(0) {
  if (*length > column_length && std::equal(column, column + column_length, name)) {
    arcs_ = *length - column_length;
  }
}

void RowRequest::trace() const {
  STP_LOG(kTrace, "exact %d *length %d vp_namelen %d\n", exact_, static_cast<int>(*length_),
          static_cast<int>(column_length_));
}

void RowRequest::answer(std::initializer_list<uint32_t> index) const {
  oid *const end = std::copy_n(column_, column_length_, name_);
  *length_ = static_cast<size_t>(std::copy(index.begin(), index.end(), end) - name_);
}

}  // namespace stpsnmp::tables
