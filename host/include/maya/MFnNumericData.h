/// Function set for pairs and triples of numbers as data; also defines the numeric types.
#pragma once

#include <maya/MFnData.h>

class MHOST_EXPORT MFnNumericData : public MFnData {
public:
    enum Type {
        kInvalid = 0,
        kBoolean,
        kByte,
        kChar,
        kShort,
        k2Short,
        k3Short,
        kLong,
        kInt = kLong,
        k2Long,
        k2Int = k2Long,
        k3Long,
        k3Int = k3Long,
        kFloat,
        k2Float,
        k3Float,
        kDouble,
        k2Double,
        k3Double,
        k4Double,
        kLast
    };

    MFnNumericData();
    MFnNumericData(MObject& object, MStatus* ReturnStatus = NULL);
    MFnNumericData(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnNumericData() override;

    MFn::Type type() const override;

    /// Creates data of a pair or triple type, initialized to zero, and attaches to it.
    MObject create(MFnNumericData::Type dataType, MStatus* ReturnStatus = NULL);
    MFnNumericData::Type numericType(MStatus* ReturnStatus = NULL) const;

    /// Fail unless the number of values and their type match the data.
    MStatus getData(short& value0, short& value1);
    MStatus getData(int& value0, int& value1);
    MStatus getData(float& value0, float& value1);
    MStatus getData(double& value0, double& value1);
    MStatus getData(short& value0, short& value1, short& value2);
    MStatus getData(int& value0, int& value1, int& value2);
    MStatus getData(float& value0, float& value1, float& value2);
    MStatus getData(double& value0, double& value1, double& value2);
    MStatus setData(short value0, short value1);
    MStatus setData(int value0, int value1);
    MStatus setData(float value0, float value1);
    MStatus setData(double value0, double value1);
    MStatus setData(short value0, short value1, short value2);
    MStatus setData(int value0, int value1, int value2);
    MStatus setData(float value0, float value1, float value2);
    MStatus setData(double value0, double value1, double value2);
};
