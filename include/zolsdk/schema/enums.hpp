#pragma once
// The portable enumerations of the library's interface.
#include <cstdint>

namespace zolsdk {

enum DataTypeGroupEnum : int32_t {
    dtUnknown = 0, dtVarChar = 1, dtCharBLOB = 2, dtInteger = 3, dtUnsignedInteger = 4, dtDate = 5,
    dtTime = 6, dtDateTime = 7, dtBoolean = 8, dtDouble = 9, dtBinaryBLOB = 10, dtSingle = 11,
    dtDecimal = 12, dtCurrency = 13,
};

enum SortOrderEnum : int32_t { soNull = 0, soAscending = 1, soDescending = 2 };

enum DbConditionOperatorEnum : int32_t {
    dcoEqualto = 1, dconotequalto = 2, dcoLessThan = 3, dcoGreaterThan = 4, dcoLessThanEqualTo = 5,
    dcoGreaterThanEqualTo = 6, dcoBeginsWith = 7, dcoEndsWith = 8, dcoContains = 9, dcoDoesNotBeginWith = 10,
    dcoDoesNotEndWith = 11, dcoDoesNotContain = 12, dcoContainsSimilar = 13, dcoNull = 14, dcoNotNull = 15,
    dcoYesterday = 16, dcoToday = 17, dcoTomorrow = 18, dcoNextSevenDays = 19, dcoLastSevenDays = 20,
    dcoNextWeek = 21, dcoLastWeek = 22, dcoThisWeek = 23, dcoThisMonth = 24, dcoLastMonth = 25,
    dcoNextMonth = 26, dcoThisYear = 27, dcoLastYear = 28, dcoNextYear = 29, dcoOn = 30, dcoOnOrBefore = 31,
    dcoOnOrAfter = 32, dcoLastXHours = 33, dcoNextXHours = 34, dcoLastXDays = 35, dcoNextXDays = 36,
    dcoLastXWeeks = 37, dcoNextXWeeks = 38, dcoLastXMonths = 39, dcoNextXMonths = 40, dcoLastXYears = 41,
    dcoNextXYears = 42, dcoBefore = 43, dcoAfter = 44, dcoIn = 45,
};

enum DbLogicalOperatorEnum : int32_t { dloNotSet = 0, dloAnd = 1, dloOr = 2, dloNot = 3 };
enum DbConditionValueTypeEnum : int32_t { dcvtConstant = 0, dcvtUserDefined = 1 };
enum MapTypeEnum : int32_t { mtColumn = 0, mtConstant = 1, mtExpression = 256, mtFunction = 257 };
enum MapVariableTypeEnum : int32_t { mtConstantValue = 0, mtColumnValue = 1 };
enum DbExpressionOperatorEnum : int32_t {
    oNotSet = 0, oAdd = 1, oSubtract = 2, oMultiply = 3, oAnd = 6, oOr = 7, oXor = 8, oNot = 9, oRegx = 10,
};

} // namespace zolsdk
