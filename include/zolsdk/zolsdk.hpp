#pragma once
// The one header a client includes.

// Platform: text, failures, references, tagged values, rowsets.
#include "zolsdk/platform/text.hpp"
#include "zolsdk/platform/error.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/decimal.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/locale.hpp"
#include "zolsdk/platform/variant.hpp"
#include "zolsdk/platform/collection.hpp"
#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/platform/ado/parameter.hpp"
#include "zolsdk/platform/ado/recordset.hpp"

// Catalog, sessions, readers, dialects.
#include "zolsdk/catalog/error_numbers.hpp"
#include "zolsdk/catalog/catalog.hpp"
#include "zolsdk/catalog/class_factory.hpp"
#include "zolsdk/sessions/session.hpp"
#include "zolsdk/readers/reader.hpp"
#include "zolsdk/dialects/sql_builder.hpp"

// Schema model.
#include "zolsdk/schema/enums.hpp"
#include "zolsdk/schema/enumerable.hpp"
#include "zolsdk/schema/table.hpp"
#include "zolsdk/schema/column.hpp"
#include "zolsdk/schema/index.hpp"

// Query model.
#include "zolsdk/query/visitor.hpp"
#include "zolsdk/query/query.hpp"

// Data model.
#include "zolsdk/data/blob.hpp"
#include "zolsdk/data/data_columns.hpp"
#include "zolsdk/data/data_row.hpp"
#include "zolsdk/data/data_rows.hpp"

// Mapping.
#include "zolsdk/mapping/column_map.hpp"
#include "zolsdk/mapping/map_expression.hpp"
#include "zolsdk/support/encrypt.hpp"

// The lossless copy road.
#include "zolsdk/transfer/transfer.hpp"
