#include "store/StoreDescription.h"

const StoreDescription& StoreDescription::Of(unsigned int version) {
  static const StoreDescription* const descriptions[] = {
      &storeDescriptionVersion1, &storeDescriptionVersion2, &storeDescriptionVersion3,
      &storeDescriptionVersion4, &storeDescriptionVersion5, &storeDescriptionVersion6,
  };
  return version >= 1 && version <= 6 ? *descriptions[version - 1] : storeDescriptionVersion7;
}
