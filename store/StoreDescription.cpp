#include "store/StoreDescription.h"

#include <iterator>

#include "schema/SchemaVersion7.h"
#include "store/AllStores.h"

namespace {

/// By version, from 1.
constexpr StoreDescription descriptions[] = {
    {SchemaVersion1(), Deletion::AlignmentsAloneUntilDone},
    {SchemaVersion2(), Deletion::AlignmentsAlone},
    {SchemaVersion3(), Deletion::WithAssociatedRecords},
    {SchemaVersion4(), Deletion::WithAssociatedRecords},
    {SchemaVersion5(), Deletion::WithAssociatedRecords},
    {SchemaVersion6(), Deletion::WithAssociatedRecords},
    {SchemaVersion7(), Deletion::WithAssociatedRecords},
};
static_assert(std::size(descriptions) == currentSchemaVersion, "every store has a description");

}  // namespace

const StoreDescription& StoreDescription::Of(unsigned int version) {
  return descriptions[version >= 1 && version <= currentSchemaVersion ? version - 1
                                                                      : currentSchemaVersion - 1];
}
