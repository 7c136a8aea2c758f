#pragma once
// The one header a client includes.
#include "zolsdk/platform/text.hpp"
#include "zolsdk/platform/error.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/decimal.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/locale.hpp"
#include "zolsdk/platform/variant.hpp"
#include "zolsdk/platform/collection.hpp"
#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/platform/ado/recordset.hpp"
