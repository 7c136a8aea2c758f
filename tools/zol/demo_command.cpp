// zol demo: everything on this machine, no server needed. Builds a sample
// Access database with the library itself (a small shop: customers,
// products with pictures, orders and their lines; text, memo, integers of
// three widths, decimals, currency, single and double, dates, yes/no and an
// OLE column; primary keys, a unique, a composite and a descending index; a
// few thousand rows), then moves it into a new Access file and into an XML
// schema file (the XML engine keeps the schema only), with the report of
// each run. The XML file it wrote is printed at the end.
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>

#include "commands.hpp"
#include "transfer_output.hpp"
#include "zolsdk/transfer/transfer.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;

namespace zol {

namespace {

// A fixed sequence of pseudo-random numbers: every demo builds the same data.
class Dice {
public:
    uint32_t Next() {
        state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<uint32_t>(state_ >> 33);
    }
    int Between(int lo, int hi) { return lo + static_cast<int>(Next() % static_cast<uint32_t>(hi - lo + 1)); }
    template <class T, size_t N>
    const T& Pick(const T (&items)[N]) { return items[Next() % N]; }

private:
    uint64_t state_ = 20240601;
};

struct Column {
    const char16_t* name;
    int32_t group;
    int32_t precision; // integers: digits; decimals: precision
    int32_t scale;
    int32_t length;    // text
    bool nullable;
};

struct Index {
    const char16_t* name;
    const char16_t* columns; // "a<,b>": "<" ascending, ">" descending
    int32_t flags;           // 1 primary key, 2 unique
};

struct TableDef {
    const char16_t* name;
    std::vector<Column> columns;
    std::vector<Index> indexes;
};

const std::vector<TableDef>& ShopTables() {
    static const std::vector<TableDef> tables = {
        {u"customers",
         {{u"id", dtInteger, 10, 0, 0, false},
          {u"name", dtVarChar, 0, 0, 60, false},
          {u"email", dtVarChar, 0, 0, 120, true},
          {u"city", dtVarChar, 0, 0, 40, true},
          {u"notes", dtCharBLOB, 0, 0, 0, true},
          {u"created", dtDateTime, 0, 0, 0, true},
          {u"vip", dtBoolean, 0, 0, 0, true},
          {u"credit", dtCurrency, 19, 4, 0, true}},
         {{u"pk_customers", u"id<", 1}, {u"ix_city_name", u"city<,name<", 0}}},
        {u"products",
         {{u"id", dtInteger, 10, 0, 0, false},
          {u"code", dtVarChar, 0, 0, 12, false},
          {u"title", dtVarChar, 0, 0, 100, true},
          {u"price", dtDecimal, 10, 2, 0, true},
          {u"weight", dtSingle, 7, 0, 0, true},
          {u"stock", dtInteger, 5, 0, 0, true},
          {u"rating", dtDouble, 15, 0, 0, true},
          {u"picture", dtBinaryBLOB, 0, 0, 0, true}},
         {{u"pk_products", u"id<", 1}, {u"ux_code", u"code<", 2}}},
        {u"orders",
         {{u"id", dtInteger, 10, 0, 0, false},
          {u"customer_id", dtInteger, 10, 0, 0, false},
          {u"ordered", dtDateTime, 0, 0, 0, true},
          {u"status", dtInteger, 3, 0, 0, true},
          {u"total", dtCurrency, 19, 4, 0, true},
          {u"shipped", dtBoolean, 0, 0, 0, true},
          {u"note", dtVarChar, 0, 0, 200, true}},
         {{u"pk_orders", u"id<", 1}, {u"ix_customer", u"customer_id<", 0}, {u"ix_newest", u"ordered>", 0}}},
        {u"order_lines",
         {{u"order_id", dtInteger, 10, 0, 0, false},
          {u"line_no", dtInteger, 5, 0, 0, false},
          {u"product_id", dtInteger, 10, 0, 0, false},
          {u"quantity", dtInteger, 5, 0, 0, true},
          {u"unit_price", dtCurrency, 19, 4, 0, true}},
         {{u"pk_order_lines", u"order_id<,line_no<", 1}, {u"ix_product", u"product_id<", 0}}},
    };
    return tables;
}

// The column rows of the dialects' CreateTableSql.
String ColumnRows(const TableDef& t) {
    String rows;
    int ordinal = 0;
    for (const Column& c : t.columns) {
        if (!rows.empty()) rows += u";";
        rows += String(t.name) + u"," + c.name + u"," + IntText(++ordinal) + u",0," + IntText(c.group) + u",False,," +
                IntText(c.precision) + u"," + IntText(c.scale) + u"," + IntText(c.length) + u"," +
                (c.nullable ? u"True" : u"False");
    }
    return rows;
}

void CreateTables(const Ref<DbCatalog>& db) {
    Ref<IDBSession> session = db->Session();
    Ref<IDbSqlBuilder> sql = session->DbSqlBuilder();
    for (const TableDef& t : ShopTables()) {
        session->ExecuteNoQuery(sql->CreateTableSql(t.name, ColumnRows(t), String()));
        for (const Index& x : t.indexes) session->ExecuteNoQuery(sql->CreateIndexSql(x.name, t.name, x.columns, x.flags));
    }
}

const char16_t* const kFirst[] = {u"Anna", u"Bruno", u"Chloé", u"Dmitri", u"Eva", u"Farid", u"Greta", u"Hiro",
                                  u"Ines", u"Jonas", u"Kalinda", u"Łukasz", u"Marta", u"Noor", u"Oskar", u"Priya"};
const char16_t* const kLast[] = {u"Andersen", u"Bauer", u"Costa", u"Dubois", u"Eriksen", u"Fischer", u"García",
                                 u"Hoffmann", u"Ivanova", u"Jensen", u"Kowalski", u"Lindqvist", u"Müller",
                                 u"Nakamura", u"O'Brien", u"渡辺"};
const char16_t* const kCities[] = {u"Aarhus", u"Bergen", u"Cork", u"Dresden", u"Évora", u"Graz", u"Lyon", u"Turku"};
const char16_t* const kWords[] = {u"blue", u"steel", u"garden", u"lamp", u"oak", u"travel", u"paper", u"wool",
                                  u"glass", u"copper", u"mini", u"classic"};

double Day(int offset, int seconds) { return DateSerial(2021, 1, 1) + offset + seconds / 86400.0; }

// Inserts rows one at a time through the library's own single-row import,
// all inside one connection scope.
template <class Fill>
int64_t AddRows(const Ref<DbCatalog>& db, const String& table, int count, Fill fill) {
    auto ds = Ref<DbDataSet>::New();
    ds->Init(db, table, u"", u"");
    db->BeginTransaction();
    try {
        for (int i = 1; i <= count; ++i) {
            Ref<DbDataRow> row = ds->NewRow();
            fill(*row, i);
            db->ImportDataRow(table, ds, row);
        }
    } catch (...) {
        db->RollbackTransaction();
        throw;
    }
    db->EndTransaction();
    return count;
}

void FillShop(const Ref<DbCatalog>& db, int scale, std::ostream& out) {
    Dice dice;
    const int customers = 100 * scale, products = 40 * scale, orders = 300 * scale;
    AddRows(db, u"customers", customers, [&](DbDataRow& r, int i) {
        String name = String(dice.Pick(kFirst)) + u" " + dice.Pick(kLast);
        r.LetItem(Variant(u"id"), Variant(int32_t{i}));
        r.LetItem(Variant(u"name"), Variant(name));
        if (i % 7 != 0) r.LetItem(Variant(u"email"), Variant(u"customer" + IntText(i) + u"@example.org"));
        r.LetItem(Variant(u"city"), Variant(dice.Pick(kCities)));
        if (i % 3 == 0) {
            String notes;
            for (int k = dice.Between(20, 90); k > 0; --k) notes += String(dice.Pick(kWords)) + u" ";
            auto blob = Ref<DbBlob>::New();
            blob->text(u"Notes on " + name + u", line one.\r\nThen: " + notes);
            r.SetItem(Variant(u"notes"), Variant(blob));
        }
        r.LetItem(Variant(u"created"), Variant::FromDate(Day(dice.Between(0, 900), dice.Between(0, 86399))));
        r.LetItem(Variant(u"vip"), Variant(i % 5 == 0));
        r.LetItem(Variant(u"credit"), Variant(Currency::FromRaw(int64_t{dice.Between(0, 5000000)} * 100)));
    });
    out << "  customers: " << customers << " rows\n";
    AddRows(db, u"products", products, [&](DbDataRow& r, int i) {
        r.LetItem(Variant(u"id"), Variant(int32_t{i}));
        r.LetItem(Variant(u"code"), Variant(u"P-" + IntText(10000 + i * 7)));
        r.LetItem(Variant(u"title"), Variant(String(dice.Pick(kWords)) + u" " + dice.Pick(kWords) + u" #" + IntText(i)));
        r.LetItem(Variant(u"price"), Variant(Decimal::FromInt64(dice.Between(99, 99999)).Div(Decimal::FromInt64(100))));
        r.LetItem(Variant(u"weight"), Variant(static_cast<float>(dice.Between(5, 50000)) / 100.0f));
        r.LetItem(Variant(u"stock"), Variant(int16_t(dice.Between(0, 3000))));
        r.LetItem(Variant(u"rating"), Variant(dice.Between(10, 50) / 10.0 + dice.Between(0, 99) / 1000.0));
        if (i % 4 != 0) {
            Bytes picture(static_cast<size_t>(dice.Between(64, 4096)));
            for (uint8_t& b : picture) b = static_cast<uint8_t>(dice.Next());
            auto blob = Ref<DbBlob>::New();
            blob->DataBytes(picture);
            r.SetItem(Variant(u"picture"), Variant(blob));
        }
    });
    out << "  products: " << products << " rows (with pictures)\n";
    int lines = 0;
    std::vector<int> linesOf(static_cast<size_t>(orders) + 1);
    AddRows(db, u"orders", orders, [&](DbDataRow& r, int i) {
        linesOf[static_cast<size_t>(i)] = dice.Between(1, 4);
        lines += linesOf[static_cast<size_t>(i)];
        r.LetItem(Variant(u"id"), Variant(int32_t{i}));
        r.LetItem(Variant(u"customer_id"), Variant(int32_t(dice.Between(1, customers))));
        r.LetItem(Variant(u"ordered"), Variant::FromDate(Day(dice.Between(0, 1000), dice.Between(0, 86399))));
        r.LetItem(Variant(u"status"), Variant(int16_t(dice.Between(0, 4))));
        r.LetItem(Variant(u"total"), Variant(Currency::FromRaw(int64_t{dice.Between(100, 2000000)} * 100)));
        r.LetItem(Variant(u"shipped"), Variant(dice.Between(0, 1) == 1));
        if (i % 9 == 0) r.LetItem(Variant(u"note"), Variant(u"deliver to the back door, ring twice"));
    });
    out << "  orders: " << orders << " rows\n";
    int order = 1, line = 0;
    AddRows(db, u"order_lines", lines, [&](DbDataRow& r, int) {
        if (++line > linesOf[static_cast<size_t>(order)]) {
            ++order;
            line = 1;
        }
        r.LetItem(Variant(u"order_id"), Variant(int32_t{order}));
        r.LetItem(Variant(u"line_no"), Variant(int16_t(line)));
        r.LetItem(Variant(u"product_id"), Variant(int32_t(dice.Between(1, products))));
        r.LetItem(Variant(u"quantity"), Variant(int16_t(dice.Between(1, 12))));
        r.LetItem(Variant(u"unit_price"), Variant(Currency::FromRaw(int64_t{dice.Between(99, 99999)} * 100)));
    });
    out << "  order_lines: " << lines << " rows\n";
}

// A catalog for a new, empty database at the attribute string's place.
Ref<DbCatalog> Fresh(const String& attrs) {
    auto db = Ref<DbCatalog>::New();
    db->Init(attrs);
    db->Drop();
    db->Create();
    return db;
}

// The shop's tables over the lossless road, as zol migrate moves them.
int Migrate(const String& from, const String& to, std::ostream& out) {
    transfer::Options options;
    for (const TableDef& t : ShopTables()) options.tables.push_back(t.name);
    transfer::Plan plan = transfer::MakePlan(from, to, options);
    PrintPlan(plan, out);
    transfer::Report report = transfer::Run(plan, options);
    out << "\nreport:\n" << ToUtf8(report.Text());
    int failures = 0;
    for (const auto& t : report.tables) failures += t.Ok() ? 0 : 1;
    return failures;
}

} // namespace

int RunDemo(std::string dir, int scale, std::ostream& out) {
    if (dir.empty()) {
        std::string pattern = (std::filesystem::temp_directory_path() / "zol-demo-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) {
            std::cerr << "zol demo: cannot make a folder under " << std::filesystem::temp_directory_path() << "\n";
            return 1;
        }
        dir = pattern;
    } else {
        std::filesystem::create_directories(dir);
    }
    String location = FromUtf8(std::filesystem::absolute(dir).string());
    auto attrs = [&](const char16_t* type, const char16_t* file) {
        return u"dbtype=" + String(type) + u";dbname=" + String(file) + u";dblocation=" + location;
    };

    out << "zol demo in " << ToUtf8(location) << "\n\n";
    out << "building the sample Access database shop.mdb\n";
    Ref<DbCatalog> shop = Fresh(attrs(u"msaccess", u"shop.mdb"));
    CreateTables(shop);
    FillShop(shop, scale, out);

    out << "\nmigrating shop.mdb into a new Access database, shop_copy.mdb\n";
    Fresh(attrs(u"msaccess", u"shop_copy.mdb"));
    int failures = Migrate(attrs(u"msaccess", u"shop.mdb"), attrs(u"msaccess", u"shop_copy.mdb"), out);

    out << "\nmigrating the schema of shop.mdb into an XML schema file, shop_schema.xml\n";
    std::filesystem::remove(std::filesystem::path(ToUtf8(location)) / "shop_schema.xml");
    failures += Migrate(attrs(u"msaccess", u"shop.mdb"), attrs(u"msxml", u"shop_schema.xml"), out);
    Ref<DbCatalog> xml = Ref<DbCatalog>::New();
    xml->Init(attrs(u"msxml", u"shop_schema.xml"));
    out << "\nthe XML catalog's reader lists " << xml->Tables()->Count() << " tables; shop_schema.xml holds:\n";
    std::ifstream file(std::filesystem::path(ToUtf8(location)) / "shop_schema.xml");
    out << file.rdbuf();

    out << "\nfiles: " << ToUtf8(location) << "/{shop.mdb, shop_copy.mdb, shop_schema.xml}\n"
        << "look at them with: zol schema \"" << ToUtf8(attrs(u"msaccess", u"shop_copy.mdb")) << "\"\n";
    return failures ? 1 : 0;
}

Command AddDemoCommand(CLI::App& zol) {
    struct Options {
        std::string dir;
        int scale = 4;
    };
    auto o = std::make_shared<Options>();
    CLI::App* app = zol.add_subcommand("demo", "Build a sample Access database and migrate it into a new Access file "
                                               "and an XML schema file; no server needed.");
    app->add_option("--dir", o->dir, "the folder for the files (a new temporary folder when not given)")
        ->type_name("DIR");
    app->add_option("--scale", o->scale, "the sample's size; 4 makes a few thousand rows")
        ->type_name("N")
        ->check(CLI::Range(1, 1000));
    return {app, [o] { return RunDemo(o->dir, o->scale, std::cout); }};
}

} // namespace zol
