#include "Report/FilterReader.h"

#include <Utility/ConditionFilter.h>
#include <Utility/EqualityListFilter.h>
#include <Utility/PatternFilter.h>
#include <Utility/PatternListFilter.h>
#include <Utility/RangeFilter.h>

#include <QDebug>

namespace corvane {
namespace demo {

using namespace base::core::utility;

namespace {

// The enumerations are read from their names; an unknown name reads as UNKNOWN.
template <class E>
E named(const QDomElement& element, const char* attribute)
{
    E value;
    value = element.attribute(QString::fromLatin1(attribute));
    return value;
}

Filter* filterOf(const QDomElement& element)
{
    const QString field = element.attribute("field");
    const QString kind = element.tagName();
    if (kind == QLatin1String("condition")) {
        auto* filter = new ConditionFilter;
        filter->setFieldName(field);
        filter->setCompareOperation(named<CompareOperationEnum>(element, "operation"));
        filter->setFieldValue(element.attribute("value"));
        return filter;
    }
    if (kind == QLatin1String("range")) {
        auto* filter = new RangeFilter;
        filter->setFieldName(field);
        filter->setFirstComparison(named<CompareOperationEnum>(element, "first"));
        filter->setMinValue(element.attribute("min"));
        filter->setSecondComparison(named<CompareOperationEnum>(element, "second"));
        filter->setMaxValue(element.attribute("max"));
        return filter;
    }
    if (kind == QLatin1String("pattern")) {
        auto* filter = new PatternFilter;
        filter->setFieldName(field);
        filter->setPatternPositionEnum(named<PatternPositionEnum>(element, "position"));
        filter->setPattern(element.attribute("pattern"));
        return filter;
    }
    if (kind == QLatin1String("patterns")) {
        auto* filter = new PatternListFilter;
        filter->setFieldName(field);
        filter->setPatternPositionEnum(named<PatternPositionEnum>(element, "position"));
        filter->setLogicOperation(named<LogicOperationEnum>(element, "join"));
        filter->setPatternList(element.attribute("list").split('|'));
        return filter;
    }
    if (kind == QLatin1String("equals")) {
        return new EqualityListFilter(field, element.attribute("values").split('|'));
    }
    qWarning().noquote() << QStringLiteral("FilterChain: unknown filter <%1> skipped").arg(kind);
    return nullptr;
}

} // namespace

FilterChain::FilterChain(const QDomElement& filter) : complex(std::make_unique<ComplexFilter>())
{
    for (QDomElement element = filter.firstChildElement(); !element.isNull();
         element = element.nextSiblingElement()) {
        if (Filter* created = filterOf(element)) {
            this->created.push_back(created);
            complex->addFilter(named<LogicOperationEnum>(element, "logic"), created);
        }
    }
}

FilterChain::~FilterChain()
{
    complex.reset(); // deletes the first half
    for (size_t i = (created.size() + 1) / 2; i < created.size(); ++i) {
        delete created[i];
    }
}

} // namespace demo
} // namespace corvane
