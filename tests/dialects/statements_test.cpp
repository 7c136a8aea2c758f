// Statement texts of the four dialects for one table, character by character.
#include "dialect_test_support.hpp"

namespace zolsdk {
namespace {

using testing_support::DialectTest;
using testing_support::N;

// Orders: an integer key, a text with an index, a decimal with a default.
const String kColumns = u"Orders,Id,1,3,3,False,,10,0,0,False;"
                        u"Orders,Name,2,202,1,False,,0,0,50,True;"
                        u"Orders,Amount,3,131,12,True,0,18,4,0,True";
const String kIndexes = u"Orders,PK_Orders,-1,-1|Id<;"
                        u"Orders,IX_Name,0,0|Name>,Id<;"
                        u"Orders,UX_Name,0,-1|Name<";

class Statements : public DialectTest {
protected:
    DbMySqlSQLBuilder my;
    DbMsSqlSQLBuilder ms;
    DbMsAccessSQLBuilder ac;
    DbMsXMLSQLBuilder xml;
};

TEST_F(Statements, CreateTable) {
    EXPECT_EQ(N(my.CreateTableSql(u"Orders", kColumns, kIndexes)),
              " CREATE TABLE `Orders` (  `Id`INT(10) NOT NULL ,"
              " `Name`VARCHAR(50) CHARACTER SET utf8 COLLATE utf8_general_ci  NULL ,"
              " `Amount`DECIMAL(18,4) NULL , PRIMARY KEY (`Id` ASC), INDEX `IX_Name` (`Name` DESC,`Id` ASC),"
              " UNIQUE INDEX `UX_Name` (`Name` ASC) ) ENGINE = MyISAM CHARACTER SET 'utf8' COLLATE 'utf8_general_ci' ");
    EXPECT_EQ(N(my.CreateTableSql(u"Orders", u"Orders,Id,1,3,3,False,,10,0,0,False", u"")),
              " CREATE TABLE `Orders` (  `Id`INT(10) NOT NULL  ) ENGINE = MyISAM CHARACTER SET 'utf8' COLLATE "
              "'utf8_general_ci' ");

    const std::string mssql = " CREATE TABLE [Orders] (  [Id] INTEGER NOT NULL , [Name] NVARCHAR(50) NULL ,"
                              " [Amount] DECIMAL(18,4) NULL  )";
    EXPECT_EQ(N(ms.CreateTableSql(u"Orders", kColumns, kIndexes)), mssql);
    EXPECT_EQ(N(ms.CreateTableSql(u"Orders", kColumns, u"")), mssql); // indexes are not read
    EXPECT_EQ(N(ac.CreateTableSql(u"Orders", kColumns, kIndexes)),
              " CREATE TABLE [Orders] (  [Id] INTEGER NOT NULL , [Name] VARCHAR(50) NULL ,"
              " [Amount] DECIMAL(18,4) NULL  )");

    EXPECT_EQ(N(xml.CreateTableSql(u"Orders", kColumns, kIndexes)),
              R"(<sql type="ddl" sql_type="insert" entity="table"><tables><table table_name="Orders" type="TABLE"/>)"
              R"(</tables><columns>)"
              R"(<column table_name="Orders" column_name="Id" ordinal_position= 1 data_type= 3 data_type_group= 3)"
              R"( has_default= 0 column_default= "" numeric_precision= 10 numeric_scale= 0)"
              R"( character_maximum_length= 0 is_nullable= 0 />)"
              R"(<column table_name="Orders" column_name="Name" ordinal_position= 2 data_type= 1 data_type_group= 1)"
              R"( has_default= 0 column_default= "" numeric_precision= 0 numeric_scale= 0)"
              R"( character_maximum_length= 50 is_nullable= 1 />)"
              R"(<column table_name="Orders" column_name="Amount" ordinal_position= 3 data_type= 12)"
              R"( data_type_group= 12 has_default= 1 column_default= "0" numeric_precision= 18 numeric_scale= 4)"
              R"( character_maximum_length= 0 is_nullable= 1 />)"
              R"(</columns><indexes>)"
              R"(<index table_name="Orders" index_name="PK_Orders" primary_key= 1 unique=1>)"
              R"(<idx_column table_name="Orders" index_name=" column_name="Id" ordinal_position=1 sort_order=2 />)"
              R"(</index>)"
              R"(<index table_name="Orders" index_name="IX_Name" primary_key= 0 unique=0>)"
              R"(<idx_column table_name="Orders" index_name=" column_name="Name" ordinal_position=1 sort_order=1 />)"
              R"(<idx_column table_name="Orders" index_name=" column_name="Id" ordinal_position=2 sort_order=2 />)"
              R"(</index>)"
              R"(<index table_name="Orders" index_name="UX_Name" primary_key= 0 unique=1>)"
              R"(<idx_column table_name="Orders" index_name=" column_name="Name" ordinal_position=1 sort_order=2 />)"
              R"(</index></indexes></sql>)");
    // No blocks for empty arguments; an index without columns is left out.
    EXPECT_EQ(N(xml.CreateTableSql(u"T", u"", u"")),
              R"(<sql type="ddl" sql_type="insert" entity="table"><tables><table table_name="T" type="TABLE"/>)"
              R"(</tables></sql>)");
    EXPECT_EQ(N(xml.CreateTableSql(u"T", u"", u"T,IX,0,0|")),
              R"(<sql type="ddl" sql_type="insert" entity="table"><tables><table table_name="T" type="TABLE"/>)"
              R"(</tables><indexes/></sql>)");
}

TEST_F(Statements, CreateAndDropIndex) {
    EXPECT_EQ(N(my.CreateIndexSql(u"IX_Name", u"Orders", u"Name>,Id<", 2)),
              " CREATE  UNIQUE  INDEX `IX_Name` ON Orders (`Name` DESC,`Id` ASC)");
    EXPECT_EQ(N(my.CreateIndexSql(u"IX_Name", u"Orders", u"Name>,Id<", 0)),
              " CREATE  INDEX `IX_Name` ON Orders (`Name` DESC,`Id` ASC)");
    // A primary key loses its direction marks here (not in CREATE TABLE).
    EXPECT_EQ(N(my.CreateIndexSql(u"PK_Orders", u"Orders", u"Id<,Name>", 3)),
              " ALTER TABLE Orders ADD CONSTRAINT PRIMARY KEY  (`Id`,`Name`)");
    for (IDbSqlBuilder* b : {static_cast<IDbSqlBuilder*>(&ms), static_cast<IDbSqlBuilder*>(&ac)}) {
        EXPECT_EQ(N(b->CreateIndexSql(u"IX_Name", u"Orders", u"Name>,Id<", 2)),
                  " CREATE  UNIQUE  INDEX [IX_Name] ON Orders ([Name] DESC,[Id] ASC)");
        // The constraint is named after the table, whatever the index is called.
        EXPECT_EQ(N(b->CreateIndexSql(u"Whatever", u"Orders", u"Id<,Name>", 1)),
                  " ALTER TABLE Orders ADD CONSTRAINT [idx_Orders] PRIMARY KEY  ([Id],[Name])");
        EXPECT_EQ(N(b->DropIndexSql(u"IX_Name", u"Orders", 2)), " DROP INDEX [IX_Name] ON Orders");
        EXPECT_EQ(N(b->DropIndexSql(u"IX_Name", u"Orders", 1)), " ALTER TABLE [Orders] DROP PRIMARY KEY ");
    }
    EXPECT_EQ(N(xml.CreateIndexSql(u"IX_Name", u"Orders", u"Name>,Id<", 2)),
              R"(<sql type="ddl" sql_type="insert" entity="index">)"
              R"(<index table_name="Orders" index_name="IX_Name" primary_key= 0 unique=1>)"
              R"(<idx_column table_name="Orders" index_name=" column_name="Name" ordinal_position=1 sort_order=1 />)"
              R"(<idx_column table_name="Orders" index_name=" column_name="Id" ordinal_position=2 sort_order=2 />)"
              R"(</index></sql>)");
    EXPECT_EQ(N(xml.CreateIndexSql(u"PK", u"Orders", u"Id<", 1)),
              R"(<sql type="ddl" sql_type="insert" entity="index">)"
              R"(<index table_name="Orders" index_name="PK" primary_key= 1 unique=0>)"
              R"(<idx_column table_name="Orders" index_name=" column_name="Id" ordinal_position=1 sort_order=2 />)"
              R"(</index></sql>)");
    EXPECT_EQ(N(xml.CreateIndexSql(u"IX", u"Orders", u"", 3)), R"(<sql type="ddl" sql_type="insert" entity="index"></sql>)");

    EXPECT_EQ(N(my.DropIndexSql(u"IX_Name", u"Orders", 2)), " DROP INDEX `IX_Name` ON `Orders`");
    EXPECT_EQ(N(my.DropIndexSql(u"IX_Name", u"Orders", 3)), " ALTER TABLE `Orders` DROP PRIMARY KEY ");
    const char* xmlDrop =
        R"(<sql type="ddl" sql_type="delete" entity="index"><index table_name="Orders" index_name="PK"/></sql>)";
    EXPECT_EQ(N(xml.DropIndexSql(u"PK", u"Orders", 0)), xmlDrop);
    EXPECT_EQ(N(xml.DropIndexSql(u"PK", u"Orders", 1)), xmlDrop);
}

// Id, Name (with a quote and an escaped comma), Amount, large text, binary,
// a date and a boolean.
const String kRowSet = u"03Id,01Name,12Amount,02Notes,10Photo,05Created,08Active";
const String kRow = u"7,O'Brien%2C Ltd,1234.5,null,xyz,20240229T000000,-1";

TEST_F(Statements, Insert) {
    EXPECT_EQ(N(my.InsertSql(u"Orders", kRowSet, kRow, u"=")),
              "INSERT INTO `Orders` (`Id`,`Name`,`Amount`,`Notes`,`Photo`,`Created`,`Active`) VALUES "
              "(7,'O''Brien, Ltd',1234.5,NULL,NULL, '2024-02-29' ,1)");
    EXPECT_EQ(N(ms.InsertSql(u"Orders", kRowSet, kRow, u"?")),
              "INSERT INTO [Orders] ([Id],[Name],[Amount],[Notes],[Photo],[Created],[Active]) VALUES "
              "(7,N'O''Brien, Ltd',1234.5,?,?, '02/29/2024' ,1)");
    const std::string access = "INSERT INTO [Orders] ([Id],[Name],[Amount],[Notes],[Photo],[Created],[Active]) "
                               "VALUES (7,'O''Brien, Ltd',1234.5,NULL,NULL, #02/29/2024# ,-1)";
    EXPECT_EQ(N(ac.InsertSql(u"Orders", kRowSet, kRow, u"=")), access);
    EXPECT_EQ(N(xml.InsertSql(u"Orders", kRowSet, kRow, u"=")), access);
    EXPECT_EQ(N(my.InsertSql(u"Orders", u"", kRow, u"=")), "");
    // Values beyond the column set are not read.
    EXPECT_EQ(N(ms.InsertSql(u"Orders", u"03Id", u"1,2", u"=")), "INSERT INTO [Orders] ([Id]) VALUES (1)");
}

TEST_F(Statements, BulkInsert) {
    // Three rows: an escaped comma, a value that really held the row mark,
    // and an empty text; large text goes as a parameter.
    const String set = u"03Id,01Name,02Notes";
    const String rows = u"1,a%2Cb,x%3B2,50%3%B off,null%3B3,,long";
    EXPECT_EQ(N(my.BulkInsertSql(u"Orders", set, rows, u"?")),
              " INSERT INTO `Orders` (`Id`,`Name`,`Notes`) VALUES  (1,'a,b',?), (2,'50%3B off',?), (3,'',?)");
    EXPECT_EQ(N(ms.BulkInsertSql(u"Orders", set, rows, u"?")),
              " INSERT INTO [Orders] ([Id],[Name],[Notes])  SELECT 1,N'a,b',? UNION ALL  SELECT 2,N'50%3B off',?"
              " UNION ALL  SELECT 3,N'',?");
    EXPECT_EQ(N(ac.BulkInsertSql(u"Orders", set, rows, u"?")), "");
    EXPECT_EQ(N(xml.BulkInsertSql(u"Orders", set, rows, u"?")), "");
    EXPECT_EQ(N(my.BulkInsertSql(u"Orders", u"", rows, u"?")), "");
    // A short row is written with what it has; a long one fails.
    EXPECT_EQ(N(my.BulkInsertSql(u"Orders", set, u"4", u"=")),
              " INSERT INTO `Orders` (`Id`,`Name`,`Notes`) VALUES  (4)");
    try {
        ms.BulkInsertSql(u"Orders", u"03Id", u"1,2", u"=");
        FAIL() << "a row longer than the column set was accepted";
    } catch (const DbError& e) {
        EXPECT_EQ(e.Number(), err::SubscriptOutOfRange);
        EXPECT_NE(N(e.Source()).find("DbMsSqlSQLBuilder:IDbSqlBuilder_BulkInsertSql Ln "), std::string::npos);
    }
}

TEST_F(Statements, UpdateAndSelectByAttribute) {
    const String set = u"01Name,12Amount", values = u"Smith,10.25";
    const String attributes = u"03Id,05Created,01Name", keys = u"7,20240105T000000,null";
    EXPECT_EQ(N(my.UpdateByAttributeSql(u"Orders", set, values, u"=", attributes, keys)),
              " UPDATE `Orders` SET `Name` = 'Smith',`Amount` = 10.25 WHERE  `Id` = 7 AND `Created` =  '2024-01-05' "
              " AND `Name` IS NULL ");
    EXPECT_EQ(N(ms.UpdateByAttributeSql(u"Orders", set, values, u"=", attributes, keys)),
              " UPDATE [Orders] SET [Name] = N'Smith',[Amount] = 10.25 WHERE  [Id] = 7 AND [Created] =  '01/05/2024' "
              " AND [Name] IS NULL ");
    const std::string access = " UPDATE [Orders] SET [Name] = 'Smith',[Amount] = 10.25 WHERE  [Id] = 7 AND "
                               "[Created] =  #01/05/2024#  AND [Name] IS NULL ";
    EXPECT_EQ(N(ac.UpdateByAttributeSql(u"Orders", set, values, u"=", attributes, keys)), access);
    EXPECT_EQ(N(xml.UpdateByAttributeSql(u"Orders", set, values, u"=", attributes, keys)), access);
    // No attributes: no WHERE at all.
    EXPECT_EQ(N(my.UpdateByAttributeSql(u"Orders", u"03Id", u"1", u"=", u"", u"")), " UPDATE `Orders` SET `Id` = 1");
    EXPECT_EQ(N(my.UpdateSql(u"Orders", u"", u"", u"=")), " UPDATE `Orders` SET ");

    // Selecting by attributes compares large values with NULL.
    EXPECT_EQ(N(my.SelectByAttributeSql(u"Orders", u"[Id],[Name]", u"02Notes,03Id", u"abc,5")),
              "SELECT `Id`,`Name` FROM `Orders` WHERE  `Notes` = NULL AND `Id` = 5");
    EXPECT_EQ(N(ms.SelectByAttributeSql(u"Orders", u"", u"03Id", u"NULL")),
              "SELECT * FROM [Orders] WHERE  [Id] IS NULL ");
    // The XML dialect words this as Access does: the set is not bracketed.
    EXPECT_EQ(N(xml.SelectByAttributeSql(u"Orders", u"a,b", u"03Id", u"5")),
              "SELECT a,b FROM [Orders] WHERE  [Id] = 5");
    EXPECT_EQ(N(my.SelectByAttributeSql(u"Orders", u"", u"", u"")), "SELECT * FROM `Orders`");
}

TEST_F(Statements, Select) {
    EXPECT_EQ(N(my.SelectSql(u"Orders", u"[Id],[Name]", u"x = 1")), "SELECT `Id`,`Name` FROM `Orders` WHERE x = 1");
    EXPECT_EQ(N(my.SelectSql(u"Orders", u"", u"")), "SELECT * FROM `Orders`");
    EXPECT_EQ(N(ms.SelectSql(u"Orders", u"Id,Name", u"")), "SELECT Id,Name FROM [Orders]");
    EXPECT_EQ(N(ac.SelectSql(u"Orders", u"[Id]", u"x = 1")), "SELECT [Id] FROM [Orders] WHERE x = 1");
    EXPECT_EQ(N(xml.SelectSql(u"Orders", u"a,b", u"")), "SELECT [a],[b] FROM [Orders]");
    EXPECT_EQ(N(xml.SelectSql(u"Orders", u"", u"x = 1")), "SELECT * FROM [Orders] WHERE x = 1");
}

TEST_F(Statements, ColumnChanges) {
    const String name = u"Orders,Name,2,202,1,False,,0,0,50,True";
    EXPECT_EQ(N(my.AlterColumnSql(u"Orders", name)),
              " ALTER TABLE `Orders` ALTER COLUMN `Name` VARCHAR(50) CHARACTER SET utf8 COLLATE utf8_general_ci  NULL ");
    EXPECT_EQ(N(ms.AlterColumnSql(u"Orders", name)), " ALTER TABLE [Orders] ALTER COLUMN [Name] NVARCHAR(50) NULL ");
    EXPECT_EQ(N(ac.AlterColumnSql(u"Orders", name)), " ALTER TABLE [Orders] ALTER COLUMN [Name] VARCHAR(50) NULL ");
    EXPECT_EQ(N(my.AlterColumnSql(u"Orders", u"")), " ALTER TABLE `Orders` ");
    EXPECT_EQ(N(xml.AlterColumnSql(u"Orders", name)),
              R"(<sql type="ddl" sql_type="modify" entity="column">)"
              R"(<column table_name="Orders" column_name="Name" ordinal_position= 2 data_type= 1 data_type_group= 1)"
              R"( has_default= 0 column_default= "" numeric_precision= 0 numeric_scale= 0)"
              R"( character_maximum_length= 50 is_nullable= 1 /></sql>)");
    EXPECT_EQ(N(xml.AlterColumnSql(u"Orders", u"")), R"(<sql type="ddl" sql_type="modify" entity="column"></sql>)");

    const String added = u"Orders,Qty,4,3,3,False,,5,0,0,False;Orders,Note,5,203,2,False,,0,0,0,True";
    EXPECT_EQ(N(my.AddColumnSql(u"Orders", added)),
              " ALTER TABLE Orders  ADD COLUMN `Qty`SMALLINT(5) NOT NULL ,"
              " ADD COLUMN `Note`LONGTEXT CHARACTER SET utf8 COLLATE utf8_general_ci  NULL ");
    EXPECT_EQ(N(ms.AddColumnSql(u"Orders", added)), " ALTER TABLE [Orders]  ADD [Qty]SMALLINT NOT NULL , ADD [Note]NTEXT NULL ");
    EXPECT_EQ(N(ac.AddColumnSql(u"Orders", added)), " ALTER TABLE Orders  ADD [Qty]SMALLINT NOT NULL , ADD [Note]LONGTEXT NULL ");
    EXPECT_EQ(N(xml.AddColumnSql(u"Orders", added)),
              R"(<sql type="ddl" sql_type="modify" entity="table"><tables><table table_name="Orders" type="TABLE"/>)"
              R"(</tables><columns>)"
              R"(<column table_name="Orders" column_name="Qty" ordinal_position= 4 data_type= 3 data_type_group= 3)"
              R"( has_default= 0 column_default= "" numeric_precision= 5 numeric_scale= 0)"
              R"( character_maximum_length= 0 is_nullable= 0 />)"
              R"(<column table_name="Orders" column_name="Note" ordinal_position= 5 data_type= 2 data_type_group= 2)"
              R"( has_default= 0 column_default= "" numeric_precision= 0 numeric_scale= 0)"
              R"( character_maximum_length= 0 is_nullable= 1 />)"
              R"(</columns><indexes /></sql>)");

    EXPECT_EQ(N(my.DropColumnSql(u"Orders", u"Qty,Note")), "ALTER TABLE `Orders` DROP COLUMN Qty, DROP COLUMN Note");
    EXPECT_EQ(N(ms.DropColumnSql(u"Orders", u"Qty,Note")), "ALTER TABLE [Orders] DROP COLUMN [Qty], DROP COLUMN [Note]");
    EXPECT_EQ(N(ac.DropColumnSql(u"Orders", u"Qty,Note")), "ALTER TABLE [Orders] DROP COLUMN Qty, DROP COLUMN Note");
    EXPECT_EQ(N(xml.DropColumnSql(u"Orders", u"Qty,Note")),
              R"(<sql type="ddl" sql_type="delete" entity="column"> DROP COLUMN Qty, DROP COLUMN Note</sql>)");
}

TEST_F(Statements, SmallStatementsAndDelimiters) {
    struct Row {
        IDbSqlBuilder* b;
        const char *command, *comment, *dropTable, *del, *count, *createDb, *dropDb;
    };
    const Row rows[] = {
        {&my, ";", "--", "DROP TABLE `Orders`", "DELETE FROM `Orders`", "SELECT COUNT(*) FROM `Orders`",
         "CREATE DATABASE IF NOT EXISTS `shop` DEFAULT CHARACTER SET 'utf8' DEFAULT COLLATE 'utf8_general_ci' ",
         "DROP DATABASE IF EXISTS `shop`"},
        {&ms, "go", "#", "DROP TABLE [Orders]", "DELETE FROM [Orders]", "SELECT COUNT(*) FROM [Orders]",
         "CREATE DATABASE shop", "DROP DATABASE shop"},
        {&ac, "", "", "DROP TABLE [Orders]", "DELETE FROM [Orders]", "SELECT COUNT(*) FROM [Orders]", "", ""},
        {&xml, "", "",
         R"(<sql type="ddl" sql_type="delete" entity="table"><table table_name="Orders" /></sql>)",
         R"(<sql type="dml" sql_type="delete" entity="table_rows"><query entity="Orders"><criteria /></query></sql>)",
         "SELECT COUNT(*) FROM [Orders]", "", ""},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.dropTable);
        EXPECT_EQ(N(r.b->CommandDelimiter()), r.command);
        EXPECT_EQ(N(r.b->InlineCommentDelimiter()), r.comment);
        EXPECT_EQ(N(r.b->BlockCommentDelimiter()), "");
        EXPECT_EQ(N(r.b->CreateKeySql()), "");
        EXPECT_EQ(N(r.b->DropKeySql()), "");
        EXPECT_EQ(N(r.b->DropTableSql(u"Orders")), r.dropTable);
        EXPECT_EQ(N(r.b->DeleteSql(u"Orders")), r.del);
        EXPECT_EQ(N(r.b->CountSql(u"Orders")), r.count);
        EXPECT_EQ(N(r.b->CreateDBSql(u"shop")), r.createDb);
        EXPECT_EQ(N(r.b->DropDBSql(u"shop")), r.dropDb);
    }
}

TEST_F(Statements, FailuresNameTheClassThatRan) {
    // A statement written once for two engines still reports the engine.
    try {
        ac.InsertSql(u"Orders", u"03Id,01Name", u"1", u"=");
        FAIL() << "a short value list was accepted";
    } catch (const DbError& e) {
        EXPECT_EQ(e.Number(), err::SubscriptOutOfRange);
        const std::string source = N(e.Source());
        EXPECT_NE(source.find(" => \r\nDbMsAccessSQLBuilder:IDbSqlBuilder_InsertSql Ln "), std::string::npos) << source;
        EXPECT_EQ(source.find("DbMsSqlSQLBuilder"), std::string::npos) << source;
    }
    // A column row with too few fields, or an unreadable number.
    EXPECT_THROW(my.CreateTableSql(u"T", u"T,Id,1,3", u""), DbError);
    try {
        my.CreateTableSql(u"T", u"T,Id,1,3,x,False,,10,0,0,False", u"");
        FAIL() << "a group that is no number was accepted";
    } catch (const DbError& e) {
        EXPECT_EQ(e.Number(), err::TypeMismatch);
        EXPECT_NE(N(e.Source()).find("DbMySqlSQLBuilder:IDbSqlBuilder_CreateTableSql Ln "), std::string::npos);
    }
}

TEST(SqlBuilderFactory, EngineNumbers) {
    EXPECT_NE(dynamic_cast<DbMsXMLSQLBuilder*>(NewSqlBuilder(3).get()), nullptr);
    EXPECT_NE(dynamic_cast<DbMySqlSQLBuilder*>(NewSqlBuilder(2).get()), nullptr);
    auto ms = NewSqlBuilder(1);
    EXPECT_NE(dynamic_cast<DbMsSqlSQLBuilder*>(ms.get()), nullptr);
    EXPECT_EQ(dynamic_cast<DbMsAccessSQLBuilder*>(ms.get()), nullptr);
    auto ac = NewSqlBuilder(0);
    EXPECT_NE(dynamic_cast<DbMsAccessSQLBuilder*>(ac.get()), nullptr);
    EXPECT_EQ(dynamic_cast<DbMsXMLSQLBuilder*>(ac.get()), nullptr);
    EXPECT_TRUE(NewSqlBuilder(4).IsNothing());
    EXPECT_TRUE(NewSqlBuilder(-1).IsNothing());
}

} // namespace
} // namespace zolsdk
