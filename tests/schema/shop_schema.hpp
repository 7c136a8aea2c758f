#pragma once
// A hand-written XML schema: three tables, columns out of order in the file,
// a primary key over a column the file calls nullable, a two-column index.
inline const char* kShopSchema = R"(<?xml version="1.0" encoding="utf-8"?>
<schema><catalog>
<tables>
  <table table_name="Orders" type="TABLE"/>
  <table table_name="Customers" type="TABLE"/>
  <table table_name="Notes" type="TABLE"/>
</tables>
<columns>
  <column table_name="Orders" column_name="customer" ordinal_position="2" data_type="1" column_hasdefault="0" column_default="" numeric_precision="" numeric_scale="" character_maximum_length="40" is_nullable="1"/>
  <column table_name="Orders" column_name="id" ordinal_position="1" data_type="3" column_hasdefault="0" column_default="" numeric_precision="10" numeric_scale="" character_maximum_length="" is_nullable="1"/>
  <column table_name="Orders" column_name="placed" ordinal_position="3" data_type="7" column_hasdefault="1" column_default="now" numeric_precision="" numeric_scale="" character_maximum_length="0" is_nullable="0"/>
  <column table_name="Orders" column_name="total" ordinal_position="4" data_type="13" column_hasdefault="0" column_default="" numeric_precision="19" numeric_scale="" character_maximum_length="" is_nullable=""/>
  <column table_name="Customers" column_name="name" ordinal_position="1" data_type="1" column_hasdefault="0" column_default="" numeric_precision="" numeric_scale="" character_maximum_length="60" is_nullable="0"/>
  <column table_name="Notes" column_name="body" ordinal_position="1" data_type="2" column_hasdefault="0" column_default="" numeric_precision="" numeric_scale="" character_maximum_length="0" is_nullable="1"/>
</columns>
<indexes>
  <index table_name="Orders" index_name="PK_Orders" primary_key="1" unique="1"><index_name>PK_Orders</index_name>
    <idx_column column_name="id" ordinal_position="1" collation="1"/>
  </index>
  <index table_name="Orders" index_name="ix_customer" primary_key="0" unique="0"><index_name>ix_customer</index_name>
    <idx_column column_name="placed" ordinal_position="2" collation="2"/>
    <idx_column column_name="customer" ordinal_position="1" collation="1"/>
  </index>
</indexes>
<keys/>
</catalog></schema>
)";
