#include "Utility/FilterProcessor.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/ManagerRegistry.h"
#include "Utility/AbstractEntityBaseData.h"
#include "Utility/ComplexFilter.h"
#include "Utility/ConditionFilter.h"
#include "Utility/EqualityListFilter.h"
#include "Utility/PatternFilter.h"
#include "Utility/PatternListFilter.h"
#include "Utility/RangeFilter.h"

#include <QDebug>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvane {
namespace base {
namespace core {
namespace utility {

using entity::AbstractEntityBaseData;
using entity::EntityBase;
using exceptions::InvalidArgumentException;
using exceptions::InvalidOperationException;

namespace {

const char* const wrongCompareOperation = "Wrong compare operation enum or unknown.";
const char* const wrongPatternPosition = "Wrong pattern filter enum or unknown.";

// Logs the exception's text at critical level (unless told not to) and throws it.
struct Reporter
{
    const QObject* sender;

    template <class Exception>
    [[noreturn]] void fail(const char* method, const QString& message, bool log = true) const
    {
        const Exception exception(sender, QString::fromLatin1(method), message);
        if (log) {
            qCritical().noquote() << exception.what();
        }
        throw exception;
    }
};

// What the field table says about a field name; the same for every entity, so asked once.
struct Field
{
    template <class Kind>
    Field(AbstractEntityBaseData& data, const Kind& filter) : Field(data, nameOf(filter))
    {
    }
    Field(AbstractEntityBaseData& data, const QString& name)
        : name(name),
          known(data.contains(name)),
          number(data.isNumber(name)),
          date(data.isDate(name))
    {
    }

    template <class Kind>
    static QString nameOf(const Kind& filter)
    {
        QString name;
        filter.getFieldName(name);
        return name;
    }

    QString name;
    bool known;
    bool number;
    bool date;
};

// A numeric field counts as a number unless its value reads as 0 while its text is not "0".
bool readsAsNumber(const QVariant& value, double& number)
{
    number = value.toDouble();
    return number != 0 || value.toString() == QLatin1String("0");
}

// Truncated toward zero, clamped to the int range (a NaN counts as smallest).
int truncated(double difference)
{
    if (std::isnan(difference) || difference <= double(std::numeric_limits<int>::min())) {
        return std::numeric_limits<int>::min();
    }
    if (difference >= double(std::numeric_limits<int>::max())) {
        return std::numeric_limits<int>::max();
    }
    return int(difference);
}

// Whole seconds as QDateTime::toTime_t() counts them: since 1970 in 32 unsigned bits, and
// 0xFFFFFFFF for an invalid date-time or one outside that range (before 1970 too).
uint timeT(const QDateTime& dateTime)
{
    if (!dateTime.isValid()) {
        return uint(-1);
    }
    const qint64 seconds = dateTime.toMSecsSinceEpoch() / 1000;
    return quint64(seconds) >= Q_UINT64_C(0xFFFFFFFF) ? uint(-1) : uint(seconds);
}

int clamped(qint64 difference)
{
    return int(std::clamp<qint64>(difference, std::numeric_limits<int>::min(),
                                  std::numeric_limits<int>::max()));
}

bool compare(int difference, CompareOperationEnum::Enum operation, const Reporter& reporter)
{
    switch (operation) {
    case CompareOperationEnum::EQUAL:
        return difference == 0;
    case CompareOperationEnum::NOT_EQUAL:
        return difference != 0;
    case CompareOperationEnum::LESS:
        return difference < 0;
    case CompareOperationEnum::LESS_EQUAL:
        return difference <= 0;
    case CompareOperationEnum::GREATER:
        return difference > 0;
    case CompareOperationEnum::GREATER_EQUAL:
        return difference >= 0;
    default:
        reporter.fail<InvalidOperationException>("useConditionFilter()",
                                                 QString::fromLatin1(wrongCompareOperation));
    }
}

bool matches(const QString& text, PatternPositionEnum::Enum position, const QString& pattern,
             const Reporter& reporter, const char* method)
{
    switch (position) {
    case PatternPositionEnum::STARTSWITH:
        return text.startsWith(pattern);
    case PatternPositionEnum::ENDSWITH:
        return text.endsWith(pattern);
    case PatternPositionEnum::SOMEWHERE:
        return text.indexOf(pattern) != -1;
    default:
        reporter.fail<InvalidArgumentException>(method, QString::fromLatin1(wrongPatternPosition));
    }
}

struct Condition
{
    Condition(AbstractEntityBaseData& data, const ConditionFilter& filter, const Reporter& reporter)
        : field(data, filter), reporter(reporter)
    {
        filter.getFieldValue(fieldValue);
        CompareOperationEnum wrapped;
        filter.getCompareOperation(wrapped);
        operation = wrapped;
        number = fieldValue.toDouble();
        dateTime = QDateTime::fromString(fieldValue, Qt::ISODate);
    }

    bool test(AbstractEntityBaseData& data, const EntityBase& entity) const
    {
        if (!field.known) {
            return true;
        }
        const QVariant value = data.get(field.name, entity);
        double entityNumber = 0;
        int difference = 0;
        if (field.number && readsAsNumber(value, entityNumber)) {
            difference = truncated(entityNumber - number); // 10.7 against 10 counts as equal
        } else if (field.date && value.toDateTime().isValid()) {
            difference = clamped(dateTime.secsTo(value.toDateTime()));
        } else {
            difference = QString::localeAwareCompare(value.toString(), fieldValue);
        }
        return compare(difference, operation, reporter);
    }

    Field field;
    Reporter reporter;
    QString fieldValue;
    CompareOperationEnum::Enum operation;
    double number;
    QDateTime dateTime;
};

struct Range
{
    Range(AbstractEntityBaseData& data, const RangeFilter& filter, const Reporter& reporter)
        : field(data, filter), reporter(reporter)
    {
        QString minText;
        QString maxText;
        filter.getMinValue(minText);
        filter.getMaxValue(maxText);
        min = minText.toDouble();
        max = maxText.toDouble();
        minDate = QDateTime::fromString(minText, Qt::ISODate);
        maxDate = QDateTime::fromString(maxText, Qt::ISODate);
        CompareOperationEnum wrapped;
        filter.getFirstComparison(wrapped);
        first = wrapped;
        filter.getSecondComparison(wrapped);
        second = wrapped;
    }

    // The second comparison is looked at only when the first held.
    bool test(AbstractEntityBaseData& data, const EntityBase& entity) const
    {
        if (!field.known) {
            return true;
        }
        const QVariant value = data.get(field.name, entity);
        if (field.number) {
            double n = 0;
            return readsAsNumber(value, n) && holds(first, min <= n, min < n)
                && holds(second, n <= max, n < max);
        }
        if (field.date) {
            const QDateTime v = value.toDateTime();
            // "<=" compares whole seconds, "<" milliseconds.
            return v.isValid() && holds(first, timeT(minDate) <= timeT(v), minDate < v)
                && holds(second, timeT(v) <= timeT(maxDate), v < maxDate);
        }
        reporter.fail<InvalidArgumentException>(
            "useRangeFilter()", QStringLiteral("Unknown QVariant can't be converted."));
    }

    bool holds(CompareOperationEnum::Enum operation, bool lessEqual, bool less) const
    {
        if (operation == CompareOperationEnum::LESS_EQUAL) {
            return lessEqual;
        }
        if (operation == CompareOperationEnum::LESS) {
            return less;
        }
        reporter.fail<InvalidOperationException>("useRangeFilter()",
                                                 QString::fromLatin1(wrongCompareOperation));
    }

    Field field;
    Reporter reporter;
    double min;
    double max;
    QDateTime minDate;
    QDateTime maxDate;
    CompareOperationEnum::Enum first;
    CompareOperationEnum::Enum second;
};

struct Pattern
{
    Pattern(AbstractEntityBaseData& data, const PatternFilter& filter, const Reporter& reporter)
        : field(data, filter), reporter(reporter)
    {
        filter.getPattern(pattern);
        PatternPositionEnum wrapped;
        filter.getPatternPositionEnum(wrapped);
        position = wrapped;
    }

    bool test(AbstractEntityBaseData& data, const EntityBase& entity) const
    {
        return !field.known
            || matches(data.get(field.name, entity).toString(), position, pattern, reporter,
                       "usePatternFilter()");
    }

    Field field;
    Reporter reporter;
    QString pattern;
    PatternPositionEnum::Enum position;
};

struct PatternList
{
    PatternList(AbstractEntityBaseData& data, const PatternListFilter& filter,
                const Reporter& reporter)
        : field(data, filter), reporter(reporter)
    {
        filter.getPatternList(patterns);
        PatternPositionEnum wrappedPosition;
        filter.getPatternPositionEnum(wrappedPosition);
        position = wrappedPosition;
        LogicOperationEnum wrappedOperation;
        filter.getLogicOperation(wrappedOperation);
        operation = wrappedOperation;
    }

    bool test(AbstractEntityBaseData& data, const EntityBase& entity) const
    {
        if (!field.known) {
            return true;
        }
        const QString text = data.get(field.name, entity).toString();
        if (operation == LogicOperationEnum::AND) {
            for (const QString& pattern : patterns) {
                if (!matches(text, position, pattern, reporter, "usePatternListFilter()")) {
                    return false;
                }
            }
            return true;
        }
        if (operation == LogicOperationEnum::OR) {
            bool any = false; // every pattern is tested
            for (const QString& pattern : patterns) {
                any = matches(text, position, pattern, reporter, "usePatternListFilter()") || any;
            }
            return any;
        }
        reporter.fail<InvalidArgumentException>("usePatternListFilter()",
                                                QStringLiteral("Logic operation not supported: ")
                                                    + LogicOperationEnum::asName(operation),
                                                false);
    }

    Field field;
    Reporter reporter;
    QStringList patterns;
    PatternPositionEnum::Enum position;
    LogicOperationEnum::Enum operation;
};

struct EqualityList
{
    EqualityList(AbstractEntityBaseData& data, const EqualityListFilter& filter, const Reporter&)
        : field(data, filter)
    {
        QStringList list;
        filter.getFieldValues(list);
        values = QSet<QString>(list.cbegin(), list.cend());
    }

    bool test(AbstractEntityBaseData& data, const EntityBase& entity) const
    {
        return !field.known || values.contains(data.get(field.name, entity).toString());
    }

    Field field;
    QSet<QString> values;
};

} // namespace

FilterProcessor::FilterProcessor(entity::AbstractEntityBaseData* entityData)
    : loggingManager(business::ManagerRegistry::instance()->getLoggingManager()),
      entityData(entityData)
{
}

void FilterProcessor::applyFilter(const QList<EntityBase*>& entities, const ComplexFilter& filter,
                                  QList<EntityBase*>& result)
{
    const Reporter reporter {this};
    result.clear();
    QList<Filter*> filters;
    filter.getFilter(filters);
    QList<LogicOperationEnum> operations;
    filter.getLogicOperations(operations);
    if (filters.isEmpty()) {
        result = entities;
        return;
    }

    // With one operation per filter the first opens the chain; with fewer they connect filters.
    LogicOperationEnum::Enum opening = LogicOperationEnum::NOP;
    if (operations.size() == filters.size()) {
        opening = operations.takeFirst();
    }
    if (opening != LogicOperationEnum::NOT && opening != LogicOperationEnum::NOP) {
        reporter.fail<InvalidOperationException>(
            "applyFilter()",
            QStringLiteral(
                "Filter expression starts with false operation, only NOT and NOP are allowed."));
    }

    using Step = QPair<Filter*, bool>; // filter, negated
    QList<QList<Step>> groups;
    QList<Step> group {{filters.first(), false}};
    for (int i = 1; i <= operations.size() && i < filters.size(); ++i) {
        switch (LogicOperationEnum::Enum(operations.at(i - 1))) {
        case LogicOperationEnum::AND:
            group.append({filters.at(i), false});
            break;
        case LogicOperationEnum::OR:
            groups.append(group);
            group = {{filters.at(i), false}};
            break;
        case LogicOperationEnum::AND_NOT:
            group.append({filters.at(i), true});
            break;
        case LogicOperationEnum::OR_NOT:
            groups.append(group);
            group = {{filters.at(i), true}};
            break;
        default:
            reporter.fail<InvalidOperationException>(
                "filter()", QStringLiteral("Invald logic operation for LogicOperationEnum."));
        }
    }
    groups.append(group);

    // The union grows in result, so that a throw leaves what the groups before it found.
    result.reserve(entities.size());
    QSet<EntityBase*> inUnion;
    inUnion.reserve(entities.size());
    QList<EntityBase*> matched;
    QList<EntityBase*> notMatched;
    for (const QList<Step>& steps : qAsConst(groups)) {
        QList<EntityBase*> working = entities;
        for (const Step& step : steps) {
            matched.clear();
            notMatched.clear();
            doFiltering(working, step.first, matched, notMatched);
            working.swap(step.second ? notMatched : matched);
        }
        for (EntityBase* entity : qAsConst(working)) {
            if (!inUnion.contains(entity)) {
                inUnion.insert(entity);
                result.append(entity);
            }
        }
    }

    if (opening == LogicOperationEnum::NOT) {
        result.clear();
        for (EntityBase* entity : entities) {
            if (!inUnion.contains(entity)) {
                result.append(entity);
            }
        }
    }
}

void FilterProcessor::doFiltering(const QList<EntityBase*>& entities, const Filter* filter,
                                  QList<EntityBase*>& matched, QList<EntityBase*>& notMatched)
{
    const Reporter reporter {this};
    matched.reserve(matched.size() + entities.size());
    notMatched.reserve(notMatched.size() + entities.size());
    switch (filter != nullptr ? filter->getType() : FilterTypeEnum::UNKNOWN) {
    case FilterTypeEnum::CONDITION_FILTER:
        split(entities,
              Condition(*entityData,
                        castTo<ConditionFilter>(filter, "Conditon filter could not be casted."),
                        reporter),
              matched, notMatched);
        break;
    case FilterTypeEnum::RANGE_FILTER:
        split(entities,
              Range(*entityData, castTo<RangeFilter>(filter, "Range filter could not be casted."),
                    reporter),
              matched, notMatched);
        break;
    case FilterTypeEnum::PATTERN_FILTER:
        split(entities,
              Pattern(*entityData,
                      castTo<PatternFilter>(filter, "Pattern filter could not be casted."),
                      reporter),
              matched, notMatched);
        break;
    case FilterTypeEnum::PATTERN_LIST_FILTER:
        split(entities,
              PatternList(
                  *entityData,
                  castTo<PatternListFilter>(filter, "Pattern list filter could not be casted."),
                  reporter),
              matched, notMatched);
        break;
    case FilterTypeEnum::EQUALITY_LIST_FILTER:
        split(entities,
              EqualityList(
                  *entityData,
                  castTo<EqualityListFilter>(filter, "Equality list filter could not be casted."),
                  reporter),
              matched, notMatched);
        break;
    default:
        reporter.fail<InvalidArgumentException>("doFiltering()",
                                                QStringLiteral("Wrong filter type or unknown."));
    }
}

bool FilterProcessor::useConditionFilter(const ConditionFilter& filter, const EntityBase& entity)
{
    return Condition(*entityData, filter, Reporter {this}).test(*entityData, entity);
}

bool FilterProcessor::useRangeFilter(const RangeFilter& filter, const EntityBase& entity)
{
    return Range(*entityData, filter, Reporter {this}).test(*entityData, entity);
}

bool FilterProcessor::usePatternFilter(const PatternFilter& filter, const EntityBase& entity)
{
    return Pattern(*entityData, filter, Reporter {this}).test(*entityData, entity);
}

bool FilterProcessor::usePatternListFilter(const PatternListFilter& filter,
                                           const EntityBase& entity)
{
    return PatternList(*entityData, filter, Reporter {this}).test(*entityData, entity);
}

bool FilterProcessor::useEqualityListFilter(EqualityListFilter filter, const EntityBase& entity)
{
    return EqualityList(*entityData, filter, Reporter {this}).test(*entityData, entity);
}

template <class Kind>
const Kind& FilterProcessor::castTo(const Filter* filter, const char* message)
{
    const auto* kind = dynamic_cast<const Kind*>(filter);
    if (kind == nullptr) {
        Reporter {this}.fail<InvalidOperationException>("doFiltering()",
                                                        QString::fromLatin1(message));
    }
    return *kind;
}

template <class Prepared>
void FilterProcessor::split(const QList<EntityBase*>& entities, const Prepared& prepared,
                            QList<EntityBase*>& matched, QList<EntityBase*>& notMatched)
{
    for (EntityBase* entity : entities) {
        (prepared.test(*entityData, *entity) ? matched : notMatched).append(entity);
    }
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
