#pragma once

#include <Utility/ComplexFilter.h>

#include <QDomElement>

#include <memory>
#include <vector>

namespace corvane {
namespace demo {

/**
 * A filter chain written in a configuration, with the enumerations' names as text:
 *
 *     <filter>
 *       <condition logic="NOP" field="price" operation="&gt;=" value="1"/>
 *       <pattern logic="OR" field="name" position="STARTSWITH" pattern="C"/>
 *       <range logic="AND NOT" field="received" first="&lt;=" min="2026-01-01"
 *              second="&lt;" max="2026-06-01"/>
 *       <patterns logic="OR" field="name" position="SOMEWHERE" join="OR" list="bolt|wire"/>
 *       <equals logic="OR" field="name" values="Drill bit 6 mm|Espresso cups"/>
 *     </filter>
 *
 * A chain deletes only the first half of its filters when it goes; this owner deletes the rest.
 */
class FilterChain
{
public:
    explicit FilterChain(const QDomElement& filter);
    ~FilterChain();

    const base::core::utility::ComplexFilter& chain() const { return *complex; }
    bool isEmpty() const { return created.empty(); }

private:
    std::unique_ptr<base::core::utility::ComplexFilter> complex;
    std::vector<base::core::utility::Filter*> created;
};

} // namespace demo
} // namespace corvane
