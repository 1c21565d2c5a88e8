#pragma once

#include "CoreExport.h"

namespace corvane {
namespace base {
namespace core {
namespace entity {

/**
 * Base of the framework's data records. Fields are read by name through an
 * AbstractEntityBaseData of the entity's class, which holds the entity's const getters of the
 * form void (Entity::*)(T&) const, cast to EntityBase.
 */
class CORE_EXPORT EntityBase
{
public:
    /// An entity; the fields are the subclass's.
    EntityBase();
    virtual ~EntityBase() = 0;
};

} // namespace entity
} // namespace core
} // namespace base
} // namespace corvane
