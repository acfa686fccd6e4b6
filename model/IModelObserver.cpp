#include "model/IModelObserver.h"

IModelObserver::~IModelObserver() = default;
