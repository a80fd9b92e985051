#include "view/value_sources.h"

#include <algorithm>
#include <iterator>

#include "view/master_link.h"

namespace wavo {

namespace {

struct SourceRow {
    std::string_view name;
    std::unique_ptr<ValueSource> (*make)();
};

template <typename Source>
std::unique_ptr<ValueSource> Make() {
    return std::make_unique<Source>();
}

constexpr SourceRow kSources[] = {
    {kMasterSource, Make<MasterLink>},
};

}  // namespace

std::unique_ptr<ValueSource> MakeSource(std::string_view name) {
    const auto* const row = std::find_if(std::begin(kSources), std::end(kSources),
                                         [name](const SourceRow& r) { return r.name == name; });
    return row == std::end(kSources) ? nullptr : row->make();
}

}  // namespace wavo
