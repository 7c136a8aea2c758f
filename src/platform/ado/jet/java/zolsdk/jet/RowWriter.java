package zolsdk.jet;

import io.github.spannm.jackcess.BatchUpdateException;
import io.github.spannm.jackcess.Column;
import io.github.spannm.jackcess.ConstraintViolationException;
import io.github.spannm.jackcess.Database;
import io.github.spannm.jackcess.PropertyMap;
import io.github.spannm.jackcess.Table;

import java.io.IOException;
import java.math.BigDecimal;
import java.math.BigInteger;
import java.sql.SQLException;
import java.time.LocalDateTime;
import java.util.ArrayList;
import java.util.List;

/**
 * Rows of a plain INSERT written with the file library's own row calls, a
 * batch at a time, instead of through the JDBC driver (whose mirror makes
 * each row cost a statement, and whose SQL conversion rewrites values).
 *
 * Everything is checked and converted before the first row is written. A
 * row that needs what only the driver does (a column default, a value of
 * another type to convert, a column of a kind not handled here) makes the
 * whole statement go back to the driver: that is said with the SQL state
 * NOT_DIRECT, and nothing has been written then.
 */
final class RowWriter {
    private RowWriter() {}

    static final String NOT_DIRECT = "ZJ001";

    private static SQLException notDirect(String why) {
        return new SQLException("the rows go through the driver: " + why, NOT_DIRECT, 0);
    }

    /**
     * Adds the rows (a Wire table: row count, width, values) to the table;
     * `names` are the columns the values are for, or null for all of them in
     * order. Gives the number of rows added.
     */
    static long addRows(Database db, String tableName, String[] names, byte[] rows) throws Exception {
        if (FileOpener.isJet3(db))
            throw new SQLException("a Jet 3 (Access 97) file is read here, never written", "HY000", -1809);
        Table t = db.getTable(tableName);
        if (t == null) throw notDirect("no table " + tableName + " in the file");
        List<? extends Column> all = t.getColumns();
        int[] slot;
        if (names == null) {
            slot = new int[all.size()];
            for (int i = 0; i < slot.length; i++) slot[i] = i;
        } else {
            slot = new int[names.length];
            for (int i = 0; i < names.length; i++) {
                slot[i] = -1;
                for (int c = 0; c < all.size(); c++)
                    if (all.get(c).getName().equalsIgnoreCase(names[i])) slot[i] = c;
                if (slot[i] < 0) throw notDirect("no column " + names[i] + " in " + t.getName());
            }
        }
        boolean[] given = new boolean[all.size()];
        boolean autoGiven = false;
        for (int s : slot) {
            if (given[s]) throw notDirect("a column is named twice");
            given[s] = true;
            autoGiven |= all.get(s).isAutoNumber();
        }
        for (int c = 0; c < all.size(); c++) {
            Column col = all.get(c);
            if (given[c] || col.isAutoNumber()) continue;
            PropertyMap p = col.getProperties();
            if (p.getValue(PropertyMap.DEFAULT_VALUE_PROP) != null || col.isCalculated())
                throw notDirect("column " + col.getName() + " has a default");
        }
        for (Column col : all)
            if (col.isCalculated()) throw notDirect("table " + t.getName() + " has a calculated column");

        JetBridge.Wire.In in = JetBridge.Wire.input(rows);
        int count = in.readInt();
        int width = in.readInt();
        if (width != slot.length)
            throw new SQLException("Number of query values and destination fields are not the same.", "21S01", -3520);
        boolean[] required = new boolean[all.size()];
        for (int c = 0; c < all.size(); c++)
            required[c] = Boolean.TRUE.equals(all.get(c).getProperties().getValue(PropertyMap.REQUIRED_PROP));
        List<Object[]> batch = new ArrayList<>(count);
        for (int r = 0; r < count; r++) {
            Object[] row = new Object[all.size()];
            for (int i = 0; i < width; i++) {
                Column col = all.get(slot[i]);
                Object v = toColumn(col, JetBridge.Wire.read(in));
                if (v == null && required[slot[i]] && !col.isAutoNumber())
                    throw new SQLException("The field '" + t.getName() + "." + col.getName()
                            + "' cannot contain a Null value because the Required property for this field is set to True.",
                            "23000", -3314);
                row[slot[i]] = v;
            }
            for (int c = 0; c < all.size(); c++)
                if (!given[c] && required[c] && !all.get(c).isAutoNumber())
                    throw new SQLException("The field '" + t.getName() + "." + all.get(c).getName()
                            + "' cannot contain a Null value because the Required property for this field is set to True.",
                            "23000", -3314);
            batch.add(row);
        }
        Boolean before = autoGiven ? t.isAllowAutoNumberInsert() : null;
        if (autoGiven) t.setAllowAutoNumberInsert(true);
        try {
            t.addRows(batch);
        } catch (BatchUpdateException e) {
            throw written(e, e.getUpdateCount(), count);
        } catch (ConstraintViolationException e) {
            throw written(e, 0, count);
        } catch (IllegalArgumentException e) {
            throw new SQLException(e.getMessage(), "22000", -3163, e);
        } finally {
            if (autoGiven) t.setAllowAutoNumberInsert(before);
        }
        return count;
    }

    private static SQLException written(Exception e, int done, int count) {
        String text = e.getMessage();
        Throwable cause = e.getCause();
        if (cause != null && cause.getMessage() != null) text = cause.getMessage();
        if (count > 1) text += " (" + done + " of the statement's " + count + " rows were written before it)";
        return new SQLException(text, "23000", -1605, e);
    }

    private static boolean isWhole(Object v) {
        return v instanceof Integer || v instanceof Long;
    }

    private static long whole(Object v) {
        return ((Number) v).longValue();
    }

    /** The value as the column stores it; null for a null. */
    static Object toColumn(Column col, Object v) throws SQLException {
        if (v == null) return null;
        switch (col.getType()) {
            case TEXT:
            case MEMO: {
                String s;
                if (v instanceof String) s = (String) v;
                else if (isWhole(v)) s = Long.toString(whole(v));
                else throw notDirect("a number for a text column");
                if (col.getType() == io.github.spannm.jackcess.DataType.TEXT && s.length() > col.getLengthInUnits())
                    throw new SQLException("The field is too small to accept the amount of data you attempted to add. ("
                            + col.getName() + " holds " + col.getLengthInUnits() + " characters, the value has " + s.length() + ")",
                            "22001", -3163);
                return s;
            }
            case BYTE:
                return (byte) inRange(col, v, 0, 255);
            case INT:
                return (short) inRange(col, v, Short.MIN_VALUE, Short.MAX_VALUE);
            case LONG:
                return (int) inRange(col, v, Integer.MIN_VALUE, Integer.MAX_VALUE);
            case BIG_INT:
                return inRange(col, v, Long.MIN_VALUE, Long.MAX_VALUE);
            case FLOAT:
                if (v instanceof Float) return v;
                if (v instanceof Double) return (float) (double) (Double) v;
                if (isWhole(v)) return (float) whole(v);
                if (v instanceof BigDecimal) return ((BigDecimal) v).floatValue();
                throw notDirect("a value of another kind for a Single column");
            case DOUBLE:
                if (v instanceof Double) return v;
                if (v instanceof Float) return (double) (Float) v;
                if (isWhole(v)) return (double) whole(v);
                if (v instanceof BigDecimal) return ((BigDecimal) v).doubleValue();
                throw notDirect("a value of another kind for a Double column");
            case MONEY:
            case NUMERIC: {
                BigDecimal d = decimal(v);
                int scale = col.getType() == io.github.spannm.jackcess.DataType.MONEY ? 4 : col.getScale();
                if (d.scale() > scale) {
                    if (d.stripTrailingZeros().scale() > scale) throw notDirect("more decimals than the column keeps");
                    d = d.setScale(scale);
                }
                return d;
            }
            case BOOLEAN:
                if (v instanceof Boolean) return v;
                if (isWhole(v)) return whole(v) != 0;
                throw notDirect("a value of another kind for a Yes/No column");
            case SHORT_DATE_TIME:
                if (v instanceof LocalDateTime) return v;
                throw notDirect("a value of another kind for a date column");
            case OLE:
            case BINARY:
                if (v instanceof byte[]) {
                    byte[] b = (byte[]) v;
                    if (col.getType() == io.github.spannm.jackcess.DataType.BINARY && b.length > col.getLength())
                        throw new SQLException("The field is too small to accept the amount of data you attempted to add.",
                                "22001", -3163);
                    return b;
                }
                throw notDirect("a value of another kind for a binary column");
            case GUID:
                if (v instanceof String) return v;
                throw notDirect("a value of another kind for a GUID column");
            default:
                throw notDirect("a column of type " + col.getType());
        }
    }

    private static BigDecimal decimal(Object v) throws SQLException {
        if (v instanceof BigDecimal) return (BigDecimal) v;
        if (isWhole(v)) return BigDecimal.valueOf(whole(v));
        throw notDirect("a value of another kind for a decimal column");
    }

    private static long inRange(Column col, Object v, long lo, long hi) throws SQLException {
        long n;
        if (isWhole(v)) {
            n = whole(v);
        } else if (v instanceof BigDecimal) {
            BigDecimal d = (BigDecimal) v;
            if (d.stripTrailingZeros().scale() > 0) throw notDirect("a fraction for an integer column");
            BigInteger i = d.toBigIntegerExact();
            if (i.bitLength() > 63) n = i.signum() < 0 ? Long.MIN_VALUE : Long.MAX_VALUE;
            else n = i.longValue();
            if (i.bitLength() > 63 && lo == Long.MIN_VALUE) throw overflow(col);
        } else if (v instanceof Boolean) {
            n = (Boolean) v ? -1 : 0;
        } else {
            throw notDirect("a value of another kind for an integer column");
        }
        if (n < lo || n > hi) throw overflow(col);
        return n;
    }

    private static SQLException overflow(Column col) {
        return new SQLException("Overflow: the value does not fit column " + col.getName() + " (" + col.getType() + ")",
                "22003", -3000);
    }
}
