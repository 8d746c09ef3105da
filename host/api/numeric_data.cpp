/// MFnNumericData and MFnStringData.
#include "host/base/fault.h"
#include "host/graph/data.h"
#include "host/graph/numeric_types.h"

#include <maya/MFnNumericData.h>
#include <maya/MFnStringData.h>

using host::pass_fault;
using host::report;
using host::graph::NumericData;
using host::graph::PlugValue;
using host::graph::StringData;
using host::graph::Tuple;
using host::graph::ValueKind;

namespace {

NumericData* numbers(const MObject& object) {
    return object.hasFn(MFn::kNumericData) ? static_cast<NumericData*>(object.host_object())
                                           : nullptr;
}

StringData* text(const MObject& object) {
    return object.hasFn(MFn::kStringData) ? static_cast<StringData*>(object.host_object())
                                          : nullptr;
}

template <class T>
constexpr ValueKind kind_of() {
    return sizeof(T) == sizeof(short)    ? ValueKind::short_
           : sizeof(T) == sizeof(double) ? ValueKind::real64
           : std::is_same_v<T, int>      ? ValueKind::integer
                                         : ValueKind::real32;
}

/// The data if it holds `count` values of type T, else NULL and a failing status.
template <class T>
NumericData* holding(const MObject& object, const char* point, unsigned int count,
                     MStatus& status) {
    status = pass_fault(point);
    if (!status)
        return nullptr;
    NumericData* const data = numbers(object);
    if (data == nullptr)
        status = MS::kFailure;
    else if (data->size() != count || data->component(0).kind() != kind_of<T>())
        status = MS::kInvalidParameter;
    return status ? data : nullptr;
}

template <class T, size_t Count>
MStatus get(const MObject& object, T* const (&values)[Count]) {
    MStatus status;
    const NumericData* const data = holding<T>(object, "MFnNumericData::getData", Count, status);
    for (unsigned int i = 0; data != nullptr && i < Count; ++i)
        *values[i] = static_cast<T>(data->component(i).number());
    return status;
}

template <class T, size_t Count>
MStatus set(const MObject& object, const T (&values)[Count]) {
    MStatus status;
    NumericData* const data = holding<T>(object, "MFnNumericData::setData", Count, status);
    for (unsigned int i = 0; data != nullptr && i < Count; ++i)
        data->component(i).assign_number(static_cast<double>(values[i]));
    return status;
}

} // namespace

MFnNumericData::MFnNumericData() = default;
MFnNumericData::MFnNumericData(MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnNumericData::setObject"));
}
MFnNumericData::MFnNumericData(const MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnNumericData::setObject"));
}
MFnNumericData::~MFnNumericData() = default;
MFn::Type MFnNumericData::type() const { return MFn::kNumericData; }

MObject MFnNumericData::create(MFnNumericData::Type dataType, MStatus* ReturnStatus) {
    MStatus status = pass_fault("MFnNumericData::create");
    const Tuple tuple = host::graph::tuple_of(dataType);
    if (status && tuple == Tuple::none)
        status = MS::kInvalidParameter;
    if (!report(ReturnStatus, status))
        return MObject();
    object_ = MObject(new NumericData(tuple));
    return object_;
}

MFnNumericData::Type MFnNumericData::numericType(MStatus* ReturnStatus) const {
    const NumericData* const data = numbers(object_);
    report(ReturnStatus, data == nullptr ? MS::kFailure : MS::kSuccess);
    return data == nullptr ? kInvalid : host::graph::numeric_type_of(data->tuple());
}

#define NUMERIC_ACCESS(T)                                                                          \
    MStatus MFnNumericData::getData(T& value0, T& value1) {                                        \
        return get<T, 2>(object_, {&value0, &value1});                                             \
    }                                                                                              \
    MStatus MFnNumericData::getData(T& value0, T& value1, T& value2) {                             \
        return get<T, 3>(object_, {&value0, &value1, &value2});                                    \
    }                                                                                              \
    MStatus MFnNumericData::setData(T value0, T value1) {                                          \
        return set<T, 2>(object_, {value0, value1});                                               \
    }                                                                                              \
    MStatus MFnNumericData::setData(T value0, T value1, T value2) {                                \
        return set<T, 3>(object_, {value0, value1, value2});                                       \
    }
NUMERIC_ACCESS(short)
NUMERIC_ACCESS(int)
NUMERIC_ACCESS(float)
NUMERIC_ACCESS(double)
#undef NUMERIC_ACCESS

MFnStringData::MFnStringData() = default;
MFnStringData::MFnStringData(MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnStringData::setObject"));
}
MFnStringData::MFnStringData(const MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnStringData::setObject"));
}
MFnStringData::~MFnStringData() = default;
MFn::Type MFnStringData::type() const { return MFn::kStringData; }

MObject MFnStringData::create(MStatus* ReturnStatus) { return create("", ReturnStatus); }

MObject MFnStringData::create(const MString& str, MStatus* ReturnStatus) {
    if (!report(ReturnStatus, pass_fault("MFnStringData::create")))
        return MObject();
    object_ = MObject(new StringData(str));
    return object_;
}

MString MFnStringData::string(MStatus* ReturnStatus) const {
    const StringData* const data = text(object_);
    report(ReturnStatus, data == nullptr ? MS::kFailure : MS::kSuccess);
    return data == nullptr ? MString() : data->text;
}

MStatus MFnStringData::set(const MString& str) {
    StringData* const data = text(object_);
    if (data == nullptr)
        return MS::kFailure;
    data->text = str;
    return MS::kSuccess;
}
