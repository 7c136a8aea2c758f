package zolsdk.jet;

import io.github.spannm.jackcess.Column;
import io.github.spannm.jackcess.Cursor;
import io.github.spannm.jackcess.CursorBuilder;
import io.github.spannm.jackcess.Database;
import io.github.spannm.jackcess.DatabaseBuilder;
import io.github.spannm.jackcess.Index;
import io.github.spannm.jackcess.IndexBuilder;
import io.github.spannm.jackcess.PropertyMap;
import io.github.spannm.jackcess.Relationship;
import io.github.spannm.jackcess.Table;
import io.github.spannm.jackcess.query.Query;

import java.io.File;
import java.io.IOException;
import java.math.BigDecimal;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.BasicFileAttributes;
import java.sql.Blob;
import java.sql.Clob;
import java.sql.Connection;
import java.sql.DriverManager;
import java.sql.PreparedStatement;
import java.sql.ResultSet;
import java.sql.ResultSetMetaData;
import java.sql.SQLException;
import java.sql.Statement;
import java.sql.Timestamp;
import java.sql.Types;
import java.time.LocalDate;
import java.time.LocalDateTime;
import java.time.LocalTime;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.Timer;
import java.util.TimerTask;

/**
 * The Java half of the Access provider. The native side calls these static
 * methods through JNI and exchanges values as byte arrays in one small
 * format (see Wire), so that a batch of rows crosses in one call.
 *
 * A file is reached two ways. Rows written by plain INSERTs, rows read by
 * plain SELECTs and every schema question go to the file library directly.
 * Every other statement runs through the JDBC driver, which copies the whole
 * file into an in-memory mirror when its first connection to the file opens
 * and drops the mirror when the last one closes. So the driver is started
 * for a file only when a statement needs it; from then on a keeper (one
 * extra connection) holds the mirror between statements and is closed after
 * a quiet spell, when the file is dropped or created again, or when another
 * file has taken its place at the same path. While the driver holds a file,
 * direct work goes through the driver's own handle of it, so that one
 * handle writes the file.
 */
public final class JetBridge {
    private JetBridge() {}

    /** How long a file stays open after the last statement on it. */
    static final long IDLE_MILLIS = 120_000L;

    private static final Map<String, FileState> FILES = new HashMap<>();
    private static final Timer IDLE_TIMER = new Timer("zolsdk-jet-idle", true);

    /** What the process holds of one file. Guarded by FILES. */
    private static final class FileState {
        final String key;
        Object fileKey;
        /** The file library's handle while the driver holds no mirror. */
        Database own;
        /** Direct readers still walking `own`: it stays open for them. */
        int ownReaders;
        /** A handle the driver replaced while readers walked it. */
        final List<Database> retired = new ArrayList<>();
        Connection keeper;
        /** The file's own password ("" for none), once read. */
        String password;
        int links;
        int driverLinks;
        /**
         * The file changed beside the driver's mirror (rows written directly,
         * an index or a property set in the file). The driver's mirror of a
         * table it created itself is not always what it reads back from the
         * file either (currency columns, for one, refuse values above
         * 9999.9999 until the file is read again): the next driver statement
         * that reads or writes rows has the mirror made afresh.
         */
        boolean stale;
        long lastUse;
        boolean idleCheck;

        FileState(String key) {
            this.key = key;
        }
    }

    private static String url(String path) {
        // The driver releases a mirror as soon as its last connection closes;
        // the keeper decides how long that takes. It opens the file as the
        // provider does (Jet 3 text in its code page).
        return "jdbc:ucanaccess://" + path + ";immediatelyReleaseResources=true;jackcessOpener=" + FileOpener.class.getName();
    }

    private static String canonical(String path) {
        try {
            return new File(path).getCanonicalPath();
        } catch (IOException e) {
            return new File(path).getAbsolutePath();
        }
    }

    private static Object fileKey(String path) {
        try {
            BasicFileAttributes a = Files.readAttributes(Path.of(path), BasicFileAttributes.class);
            Object key = a.fileKey();
            return key != null ? key : a.creationTime();
        } catch (IOException e) {
            return null;
        }
    }

    /** Whether the file starts as Jet and ACE files start (the driver's own words for others are obscure). */
    private static boolean looksLikeJet(String path) {
        byte[] head = new byte[19];
        try (java.io.InputStream in = new java.io.FileInputStream(path)) {
            if (in.readNBytes(head, 0, head.length) < head.length) return false;
        } catch (IOException e) {
            return true; // unreadable: the library says why
        }
        String magic = new String(head, 4, 15, java.nio.charset.StandardCharsets.ISO_8859_1);
        return magic.equals("Standard Jet DB") || magic.equals("Standard ACE DB");
    }

    private static void closeQuietly(Connection c) {
        if (c == null) return;
        try {
            c.close();
        } catch (SQLException ignored) {
            // The mirror is being dropped either way.
        }
    }

    private static void closeQuietly(Database db) {
        if (db == null) return;
        try {
            db.close();
        } catch (IOException ignored) {
            // Closing what is let go.
        }
    }

    /** Opens a connection to the file. */
    public static Link open(String path, String password) throws Exception {
        String key = canonical(path);
        String pw = password == null ? "" : password;
        // The driver would make a new database of a name that is not there;
        // Jet opens only what exists.
        synchronized (FILES) {
            FileState st = FILES.get(key);
            Object current = fileKey(key);
            if (st == null || current == null || !current.equals(st.fileKey)) {
                // A file not held yet is looked at first (a session opens a
                // connection for every statement: a held one is not).
                if (!new File(key).isFile()) throw new SQLException("Could not find file '" + path + "'.", "HY000", -1811);
                if (!looksLikeJet(key)) throw new SQLException("Unrecognized database format '" + path + "'.", "HY000", -1206);
            }
            if (st != null && (current == null || !current.equals(st.fileKey))) {
                // Another file stands at the path now (or none does): what is
                // held shows the old one.
                dropFile(st);
                st = null;
            }
            if (st == null) {
                st = new FileState(key);
                st.fileKey = current;
                FILES.put(key, st);
            }
            if (st.password == null) {
                Database db = st.keeper != null ? ((net.ucanaccess.jdbc.UcanaccessConnection) st.keeper).getDbIO()
                                                : ownDatabase(st);
                String stored = db.getDatabasePassword();
                st.password = stored == null ? "" : stored;
            }
            // A password given for a file that has none is ignored.
            if (!st.password.isEmpty() && !st.password.equals(pw)) {
                if (st.links == 0) dropFile(st);
                throw new SQLException("Not a valid password.", "28000", -1905);
            }
            st.links++;
            st.lastUse = System.currentTimeMillis();
            scheduleIdleCheck(st);
            // The driver's mirror takes the password of its first connection
            // and refuses any other: every connection gives the file's own.
            return new Link(st, st.password);
        }
    }

    /** The file library's own handle of the file. Call under FILES. */
    private static Database ownDatabase(FileState st) throws IOException {
        if (st.own == null) st.own = FileOpener.openFile(new File(st.key), null);
        return st.own;
    }

    /** Lets go of everything held of a file. Call under FILES. */
    private static void dropFile(FileState st) {
        closeQuietly(st.keeper);
        st.keeper = null;
        closeQuietly(st.own);
        st.own = null;
        for (Database db : st.retired) closeQuietly(db);
        st.retired.clear();
        st.stale = false;
        FILES.remove(st.key, st);
    }

    /** Starts the driver's mirror of the file unless it runs. Call under FILES. */
    private static void startDriver(FileState st, String password) throws SQLException {
        if (st.keeper != null) return;
        // One handle writes the file: the driver's from now on.
        if (st.own != null) {
            if (st.ownReaders == 0) closeQuietly(st.own);
            else st.retired.add(st.own);
            st.own = null;
        }
        st.keeper = DriverManager.getConnection(url(st.key), "", password);
        st.stale = false;
        // The mirror is made: the file's own column properties hold again.
        FileOpener.restoreProperties(((net.ucanaccess.jdbc.UcanaccessConnection) st.keeper).getDbIO());
    }

    private static void scheduleIdleCheck(FileState st) {
        if (st.idleCheck) return;
        st.idleCheck = true;
        IDLE_TIMER.schedule(new TimerTask() {
            @Override
            public void run() {
                synchronized (FILES) {
                    st.idleCheck = false;
                    if (FILES.get(st.key) != st) return;
                    long idle = System.currentTimeMillis() - st.lastUse;
                    if (idle >= IDLE_MILLIS && st.links == 0 && st.ownReaders == 0) dropFile(st);
                    else scheduleIdleCheck(st);
                }
            }
        }, IDLE_MILLIS);
    }

    /** Lets go of a file, so that the next open reads it afresh. */
    public static void release(String path) {
        String key = canonical(path);
        synchronized (FILES) {
            FileState st = FILES.get(key);
            if (st != null) dropFile(st);
        }
    }

    /** True while a connection of this process has the file open. */
    public static boolean inUse(String path) {
        synchronized (FILES) {
            FileState st = FILES.get(canonical(path));
            return st != null && st.links > 0;
        }
    }

    /** Makes a new, empty Access 2000 (Jet 4) file; fails if the path is taken. */
    public static void create(String path) throws Exception {
        File f = new File(path);
        if (f.exists()) throw new IOException("Database already exists: " + path);
        release(path);
        Database db = DatabaseBuilder.create(Database.FileFormat.V2000, f);
        db.close();
    }

    /** The parts of a failure the native side reports: SQL state, native code, text. */
    public static String[] describe(Throwable t) {
        String state = "";
        int code = 0;
        for (Throwable c = t; c != null; c = c.getCause()) {
            if (c instanceof SQLException) {
                SQLException s = (SQLException) c;
                if (state.isEmpty() && s.getSQLState() != null) state = s.getSQLState();
                if (code == 0) code = s.getErrorCode();
            }
        }
        String text = t.getMessage();
        if (text == null || text.isEmpty()) {
            text = t.getClass().getSimpleName();
            if (t.getCause() != null && t.getCause().getMessage() != null) text += ": " + t.getCause().getMessage();
        }
        // The driver puts its name and version in front of every message.
        text = text.replaceFirst("^UCAExc:::[0-9.]+ ", "");
        return new String[] {state, Integer.toString(code), text};
    }

    /** One open connection of the native side. */
    public static final class Link {
        private final FileState st;
        private final String password;
        private Connection connection;
        private boolean closed;

        Link(FileState st, String password) {
            this.st = st;
            this.password = password;
        }

        private void changed() {
            synchronized (FILES) {
                if (st.keeper != null) st.stale = true;
            }
        }

        /** The driver's connection, with a mirror made afresh if the file changed beside it. */
        private Connection driver(boolean refresh) throws SQLException {
            synchronized (FILES) {
                if (closed) throw new SQLException("the connection to the Access file was closed", "08003", 0);
                if (connection == null || st.keeper == null) {
                    closeQuietly(connection);
                    if (connection != null) st.driverLinks--;
                    connection = null;
                    startDriver(st, password);
                    connection = DriverManager.getConnection(url(st.key), "", password);
                    st.driverLinks++;
                }
                // Others read the mirror: it stays as it is for them.
                if (refresh && st.stale && st.driverLinks <= 1) {
                    // The driver drops a mirror with its last connection; the
                    // next connection reads the file again.
                    closeQuietly(connection);
                    connection = null;
                    st.driverLinks--;
                    closeQuietly(st.keeper);
                    st.keeper = null;
                    startDriver(st, password);
                    connection = DriverManager.getConnection(url(st.key), "", password);
                    st.driverLinks++;
                }
                return connection;
            }
        }

        /** The file library's handle: the driver's while it holds the file. */
        Database database() throws SQLException {
            synchronized (FILES) {
                if (closed) throw new SQLException("the connection to the Access file was closed", "08003", 0);
                try {
                    if (st.keeper != null) return ((net.ucanaccess.jdbc.UcanaccessConnection) st.keeper).getDbIO();
                    return ownDatabase(st);
                } catch (ClassCastException e) {
                    throw new SQLException("the connection gives no access to the file's tables", e);
                } catch (IOException e) {
                    throw new SQLException(e.getMessage(), "HY000", -1206, e);
                }
            }
        }

        /** True for a Jet 3 (Access 97) file. */
        public boolean isJet3() throws Exception {
            return FileOpener.isJet3(database());
        }

        public void close() {
            synchronized (FILES) {
                if (closed) return;
                closed = true;
                if (connection != null) {
                    closeQuietly(connection);
                    connection = null;
                    st.driverLinks--;
                }
                st.links--;
                // Pages are written as rows go in; they are forced to disk
                // when the file is let go (a force at every statement would
                // cost a disk flush a row).
                st.lastUse = System.currentTimeMillis();
            }
        }

        /**
         * Runs a statement through the driver; params is null or a Wire list
         * of values for the "?" marks. A statement that changes tables says so.
         */
        public Result execute(String sql, byte[] params, boolean changesTables) throws Exception {
            // Every statement the driver runs sees the file as it is: rows
            // and keys written beside the mirror are read in again first (a
            // constraint name the mirror made up could clash otherwise).
            Connection c = driver(true);
            Result r;
            if (params == null) {
                Statement stmt = c.createStatement();
                try {
                    boolean rows = stmt.execute(sql);
                    r = new Result(this, stmt, rows ? stmt.getResultSet() : null, rows ? -1 : stmt.getUpdateCount());
                } catch (Exception e) {
                    stmt.close();
                    throw e;
                }
            } else {
                PreparedStatement ps = c.prepareStatement(sql);
                try {
                    Wire.bind(ps, params);
                    boolean rows = ps.execute();
                    r = new Result(this, ps, rows ? ps.getResultSet() : null, rows ? -1 : ps.getUpdateCount());
                } catch (Exception e) {
                    ps.close();
                    throw e;
                }
            }
            if (changesTables) changed();
            return r;
        }

        /**
         * Adds rows with the file library's row calls (see RowWriter); fails
         * with RowWriter.NOT_DIRECT, having written nothing, when the
         * statement must go through the driver.
         */
        public long addRows(String table, String[] columns, byte[] rows) throws Exception {
            long n = RowWriter.addRows(database(), table, columns, rows);
            changed();
            synchronized (FILES) {
                st.lastUse = System.currentTimeMillis();
            }
            return n;
        }

        /**
         * The rows of a table read with the file library's cursor: all
         * columns when `columns` is null. Null when a column is not in the
         * table (the driver then says what is wrong).
         */
        public Result select(String table, String[] columns) throws Exception {
            Database db = database();
            Table t = db.getTable(table);
            if (t == null) return null;
            List<Column> cols = new ArrayList<>();
            if (columns == null) {
                cols.addAll(t.getColumns());
            } else {
                for (String name : columns) {
                    Column found = null;
                    for (Column c : t.getColumns())
                        if (c.getName().equalsIgnoreCase(name)) found = c;
                    if (found == null) return null;
                    cols.add(found);
                }
            }
            synchronized (FILES) {
                boolean own = st.keeper == null && db == st.own;
                if (own) st.ownReaders++;
                return new Result(this, db, CursorBuilder.createCursor(t), cols, own);
            }
        }

        /** The number of rows of a table, from the file; -1 when there is no such table. */
        public long countRows(String table) throws Exception {
            Table t = database().getTable(table);
            return t == null ? -1 : t.getRowCount();
        }

        void readerDone(Database db) {
            synchronized (FILES) {
                st.ownReaders--;
                if (st.ownReaders == 0 && st.retired.remove(db)) closeQuietly(db);
            }
        }

        /**
         * A primary key made in the file with the name and the column
         * directions it is given (the driver would name every primary key
         * "PrimaryKey" and make every column ascending).
         */
        public void createPrimaryKey(String table, String name, String[] columns, boolean[] ascending) throws Exception {
            Table t = table(table);
            IndexBuilder b = new IndexBuilder(name).withPrimaryKey();
            for (int i = 0; i < columns.length; i++) b.withColumns(ascending[i], column(t, columns[i]).getName());
            b.addToTable(t);
            changed();
        }

        /** An index made in the file itself: the driver would store every column ascending. */
        public void createIndex(String table, String name, boolean unique, String[] columns, boolean[] ascending)
                throws Exception {
            Table t = table(table);
            IndexBuilder b = new IndexBuilder(name);
            for (int i = 0; i < columns.length; i++) b.withColumns(ascending[i], column(t, columns[i]).getName());
            if (unique) b.withUnique();
            b.addToTable(t);
            changed();
        }

        /** The type of a column as "TYPE:length:precision:scale", for comparisons. */
        public String columnType(String table, String column) throws Exception {
            Column c = column(table(table), column);
            return c.getType().name() + ":" + c.getLengthInUnits() + ":" + c.getPrecision() + ":" + c.getScale();
        }

        /** Sets whether a column must hold a value. */
        public void setRequired(String table, String column, boolean required) throws Exception {
            Column c = column(table(table), column);
            PropertyMap p = c.getProperties();
            p.put(PropertyMap.REQUIRED_PROP, required);
            p.save();
            changed();
        }

        private Table table(String name) throws Exception {
            Table t = database().getTable(name);
            if (t == null) throw new SQLException("no table named " + name + " in the file", "42S02", -5501);
            return t;
        }

        private static Column column(Table t, String name) throws SQLException {
            for (Column c : t.getColumns())
                if (c.getName().equalsIgnoreCase(name)) return c;
            throw new SQLException("no column named " + name + " in table " + t.getName(), "42S22", -5501);
        }

        // ---- schema facts from the file's own catalog ---------------------------

        /** Rows of (name, kind, created, modified): kind TABLE, SYSTEM TABLE or VIEW. */
        public byte[] tables() throws Exception {
            Database db = database();
            Wire.Table out = new Wire.Table(4);
            for (String name : db.getTableNames()) {
                Table t = db.getTable(name);
                out.row(name, "TABLE", t.getCreatedDate(), t.getUpdatedDate());
            }
            for (String name : db.getSystemTableNames()) out.row(name, "SYSTEM TABLE", null, null);
            for (Query q : db.getQueries())
                if (q.getType() == Query.Type.SELECT && !q.isHidden()) out.row(q.getName(), "VIEW", null, null);
            return out.bytes();
        }

        private List<Table> userTables(String only) throws Exception {
            Database db = database();
            List<Table> list = new ArrayList<>();
            for (String name : db.getTableNames()) {
                if (only != null && !only.isEmpty() && !only.equalsIgnoreCase(name)) continue;
                list.add(db.getTable(name));
            }
            return list;
        }

        /**
         * Rows of (table, column, ordinal, type, length, precision, scale,
         * autonumber, hyperlink, required, default).
         */
        public byte[] columns(String only) throws Exception {
            Wire.Table out = new Wire.Table(11);
            for (Table t : userTables(only)) {
                int ordinal = 0;
                for (Column c : t.getColumns()) {
                    PropertyMap p = c.getProperties();
                    Object required = p.getValue(PropertyMap.REQUIRED_PROP);
                    Object def = p.getValue(PropertyMap.DEFAULT_VALUE_PROP);
                    out.row(t.getName(), c.getName(), ++ordinal, c.getType().name(), (int) c.getLengthInUnits(),
                            (int) c.getPrecision(), (int) c.getScale(), c.isAutoNumber(), c.isHyperlink(),
                            Boolean.TRUE.equals(required), def == null ? null : def.toString());
                }
            }
            return out.bytes();
        }

        /** Rows of (table, index, primary, unique, ignore nulls, ordinal, column, ascending). */
        public byte[] indexes(String only) throws Exception {
            Wire.Table out = new Wire.Table(8);
            for (Table t : userTables(only)) {
                for (Index ix : t.getIndexes()) {
                    // The one side of a relationship shows as an index named with a
                    // leading dot that shares the key's entries; it is no index of its own.
                    if (ix.getName().startsWith(".")) continue;
                    int ordinal = 0;
                    for (Index.Column ic : ix.getColumns())
                        out.row(t.getName(), ix.getName(), ix.isPrimaryKey(), ix.isUnique(), ix.shouldIgnoreNulls(),
                                ++ordinal, ic.getName(), ic.isAscending());
                }
            }
            return out.bytes();
        }

        /**
         * Rows of (name, pk table, pk column, fk table, fk column, ordinal,
         * cascade updates, cascade deletes, set null on delete, pk index).
         */
        public byte[] relationships() throws Exception {
            Wire.Table out = new Wire.Table(10);
            for (Relationship r : database().getRelationships()) {
                if (!r.hasReferentialIntegrity()) continue;
                Table pk = r.getFromTable();
                Index pkIndex = pk.getPrimaryKeyIndex();
                List<Column> from = r.getFromColumns();
                List<Column> to = r.getToColumns();
                for (int i = 0; i < from.size() && i < to.size(); i++)
                    out.row(r.getName(), pk.getName(), from.get(i).getName(), r.getToTable().getName(), to.get(i).getName(),
                            i + 1, r.cascadeUpdates(), r.cascadeDeletes(), r.cascadeNullOnDelete(),
                            pkIndex == null ? null : pkIndex.getName());
            }
            return out.bytes();
        }
    }

    /** The rows of one statement, or its count of rows touched. */
    public static final class Result {
        private final Link link;
        private final Statement statement;
        private ResultSet rows;
        private final long count;
        private int columnCount;

        // Rows read with the file library's cursor instead of a statement.
        private final boolean direct;
        private Cursor cursor;
        private List<Column> directColumns;
        private Database directDb;
        private boolean ownReader;
        // Columns of the driver's result that are Singles in the file: the
        // driver's mirror holds them as decimals of 7 places (whole-table
        // reads come from the file and keep them exact).
        private boolean[] singles;

        Result(Link link, Statement statement, ResultSet rows, long count) throws SQLException {
            this.link = link;
            this.statement = statement;
            this.rows = rows;
            this.count = count;
            this.direct = false;
            if (rows == null) statement.close();
            else columnCount = rows.getMetaData().getColumnCount();
        }

        Result(Link link, Database db, Cursor cursor, List<Column> columns, boolean ownReader) {
            this.link = link;
            this.statement = null;
            this.count = -1;
            this.direct = true;
            this.cursor = cursor;
            this.directColumns = columns;
            this.directDb = db;
            this.ownReader = ownReader;
            this.columnCount = columns.size();
        }

        public long count() {
            return count;
        }

        public boolean hasRows() {
            return direct || rows != null;
        }

        /**
         * The result's columns: a count, then for each its name, the file's
         * type name (or "" for a computed column), the SQL type number,
         * length, precision, scale and the hyperlink flag.
         */
        public byte[] columns() throws Exception {
            Wire.Out w = new Wire.Out();
            w.writeInt(columnCount);
            if (direct) {
                for (Column c : directColumns) {
                    w.string(c.getName());
                    w.string(c.getType().name());
                    w.writeInt(0);
                    w.writeInt(c.getLengthInUnits());
                    w.writeInt(c.getPrecision());
                    w.writeInt(c.getScale());
                    w.writeBoolean(c.isHyperlink());
                }
                return w.bytes();
            }
            ResultSetMetaData md = rows.getMetaData();
            Map<String, Table> tables = new HashMap<>();
            Database found = null;
            try {
                found = link.database();
            } catch (SQLException e) {
                // Without the file's catalog every column is described by the driver alone.
            }
            final Database db = found;
            for (int i = 1; i <= columnCount; i++) {
                String label = md.getColumnLabel(i);
                String name = md.getColumnName(i);
                String tableName = md.getTableName(i);
                Column c = null;
                if (db != null && tableName != null && !tableName.isEmpty() && name != null) {
                    Table t = tables.computeIfAbsent(tableName, n -> {
                        try {
                            return db.getTable(n);
                        } catch (IOException e) {
                            return null;
                        }
                    });
                    if (t != null) {
                        for (Column each : t.getColumns())
                            if (each.getName().equalsIgnoreCase(name)) c = each;
                    }
                }
                w.string(label != null && !label.isEmpty() ? label : name);
                if (c != null && c.getType() == io.github.spannm.jackcess.DataType.FLOAT) {
                    if (singles == null) singles = new boolean[columnCount];
                    singles[i - 1] = true;
                }
                if (c != null) {
                    w.string(c.getType().name());
                    w.writeInt(md.getColumnType(i));
                    w.writeInt(c.getLengthInUnits());
                    w.writeInt(c.getPrecision());
                    w.writeInt(c.getScale());
                    w.writeBoolean(c.isHyperlink());
                } else {
                    w.string("");
                    w.writeInt(md.getColumnType(i));
                    w.writeInt(Math.max(0, Math.min(Integer.MAX_VALUE, md.getColumnDisplaySize(i))));
                    w.writeInt(md.getPrecision(i));
                    w.writeInt(md.getScale(i));
                    w.writeBoolean(false);
                }
            }
            return w.bytes();
        }

        /** Up to `max` rows as a Wire table; a count of 0 means the end. */
        public byte[] fetch(int max) throws Exception {
            Wire.Out w = new Wire.Out();
            if (direct) {
                // Rows go straight into the answer, their count in front.
                w.writeInt(0);
                int n = 0;
                while (cursor != null && n < max) {
                    if (!cursor.moveToNextRow()) {
                        close();
                        break;
                    }
                    for (Column c : directColumns) w.value(cursor.getCurrentRowValue(c));
                    n++;
                }
                w.putInt(0, n);
                return w.bytes();
            }
            List<Object[]> batch = new ArrayList<>();
            while (rows != null && batch.size() < max) {
                if (!rows.next()) {
                    close();
                    break;
                }
                Object[] row = new Object[columnCount];
                for (int i = 0; i < columnCount; i++) {
                    Object v = rows.getObject(i + 1);
                    if (singles != null && singles[i] && v instanceof Number) v = ((Number) v).floatValue();
                    row[i] = v;
                }
                batch.add(row);
            }
            w.writeInt(batch.size());
            for (Object[] row : batch)
                for (Object v : row) w.value(v);
            return w.bytes();
        }

        public void close() {
            if (direct) {
                if (cursor != null && ownReader) link.readerDone(directDb);
                cursor = null;
                return;
            }
            try {
                if (rows != null) rows.close();
            } catch (SQLException ignored) {
                // Closing what is finished.
            }
            rows = null;
            try {
                statement.close();
            } catch (SQLException ignored) {
                // Closing what is finished.
            }
        }
    }

    /**
     * The exchange format, big-endian: a value is a tag byte and its payload.
     * N null (payload: the SQL type number), Z boolean, I int, J long,
     * F float, D double, S text (count of UTF-16 units, then the units),
     * X bytes (count, then the bytes), M decimal as plain text,
     * T date and time (year int, month, day, hour, minute, second bytes, nanos int).
     */
    static final class Wire {
        /**
         * A growing big-endian buffer. The streams of java.io lock at every
         * byte; a batch of rows is written here by one thread.
         */
        static final class Out {
            private byte[] buf = new byte[8192];
            private int size;

            private void room(int n) {
                if (size + n > buf.length) buf = java.util.Arrays.copyOf(buf, Math.max(buf.length * 2, size + n));
            }

            void writeByte(int v) {
                room(1);
                buf[size++] = (byte) v;
            }

            void writeBoolean(boolean v) {
                writeByte(v ? 1 : 0);
            }

            void writeInt(int v) {
                room(4);
                buf[size] = (byte) (v >>> 24);
                buf[size + 1] = (byte) (v >>> 16);
                buf[size + 2] = (byte) (v >>> 8);
                buf[size + 3] = (byte) v;
                size += 4;
            }

            /** Puts an int at a place already written (a count known at the end). */
            void putInt(int at, int v) {
                buf[at] = (byte) (v >>> 24);
                buf[at + 1] = (byte) (v >>> 16);
                buf[at + 2] = (byte) (v >>> 8);
                buf[at + 3] = (byte) v;
            }

            void writeLong(long v) {
                writeInt((int) (v >>> 32));
                writeInt((int) v);
            }

            void write(byte[] b) {
                room(b.length);
                System.arraycopy(b, 0, buf, size, b.length);
                size += b.length;
            }

            void writeChars(String s) {
                int n = s.length();
                room(2 * n);
                for (int i = 0; i < n; i++) {
                    char c = s.charAt(i);
                    buf[size++] = (byte) (c >>> 8);
                    buf[size++] = (byte) c;
                }
            }

            void string(String s) {
                writeInt(s.length());
                writeChars(s);
            }

            void stamp(LocalDateTime t) {
                writeByte('T');
                writeInt(t.getYear());
                writeByte(t.getMonthValue());
                writeByte(t.getDayOfMonth());
                writeByte(t.getHour());
                writeByte(t.getMinute());
                writeByte(t.getSecond());
                writeInt(t.getNano());
            }

            void value(Object v) throws Exception {
                if (v == null) {
                    writeByte('N');
                    writeInt(Types.NULL);
                } else if (v instanceof Boolean) {
                    writeByte('Z');
                    writeBoolean((Boolean) v);
                } else if (v instanceof Integer || v instanceof Short || v instanceof Byte) {
                    writeByte('I');
                    writeInt(((Number) v).intValue());
                } else if (v instanceof Long) {
                    writeByte('J');
                    writeLong((Long) v);
                } else if (v instanceof Float) {
                    writeByte('F');
                    writeInt(Float.floatToIntBits((Float) v));
                } else if (v instanceof Double) {
                    writeByte('D');
                    writeLong(Double.doubleToLongBits((Double) v));
                } else if (v instanceof BigDecimal) {
                    writeByte('M');
                    string(((BigDecimal) v).toPlainString());
                } else if (v instanceof Timestamp) {
                    stamp(((Timestamp) v).toLocalDateTime());
                } else if (v instanceof LocalDateTime) {
                    stamp((LocalDateTime) v);
                } else if (v instanceof java.sql.Date) {
                    stamp(((java.sql.Date) v).toLocalDate().atStartOfDay());
                } else if (v instanceof LocalDate) {
                    stamp(((LocalDate) v).atStartOfDay());
                } else if (v instanceof java.sql.Time) {
                    stamp(LocalDate.of(1899, 12, 30).atTime(((java.sql.Time) v).toLocalTime()));
                } else if (v instanceof LocalTime) {
                    stamp(LocalDate.of(1899, 12, 30).atTime((LocalTime) v));
                } else if (v instanceof byte[]) {
                    byte[] b = (byte[]) v;
                    writeByte('X');
                    writeInt(b.length);
                    write(b);
                } else if (v instanceof Blob) {
                    Blob b = (Blob) v;
                    long n = b.length();
                    byte[] bytes = n == 0 ? new byte[0] : b.getBytes(1, (int) n);
                    writeByte('X');
                    writeInt(bytes.length);
                    write(bytes);
                } else if (v instanceof Clob) {
                    Clob c = (Clob) v;
                    writeByte('S');
                    string(c.getSubString(1, (int) c.length()));
                } else if (v instanceof Number) {
                    writeByte('D');
                    writeLong(Double.doubleToLongBits(((Number) v).doubleValue()));
                } else {
                    writeByte('S');
                    string(v.toString());
                }
            }

            byte[] bytes() {
                return java.util.Arrays.copyOf(buf, size);
            }
        }

        /** A table of values with a fixed number of columns: row count, then the cells. */
        static final class Table {
            private final int width;
            private final List<Object[]> rows = new ArrayList<>();

            Table(int width) {
                this.width = width;
            }

            void row(Object... cells) {
                if (cells.length != width) throw new IllegalArgumentException("row width");
                rows.add(cells);
            }

            byte[] bytes() throws Exception {
                Out w = new Out();
                w.writeInt(rows.size());
                w.writeInt(width);
                for (Object[] r : rows)
                    for (Object v : r) w.value(v);
                return w.bytes();
            }
        }

        /** Reads what the native side wrote, big-endian, without the per-byte locks of java.io. */
        static final class In {
            private final java.nio.ByteBuffer buf;

            In(byte[] bytes) {
                buf = java.nio.ByteBuffer.wrap(bytes);
            }

            byte readByte() throws IOException {
                need(1);
                return buf.get();
            }

            boolean readBoolean() throws IOException {
                return readByte() != 0;
            }

            int readInt() throws IOException {
                need(4);
                return buf.getInt();
            }

            long readLong() throws IOException {
                need(8);
                return buf.getLong();
            }

            void readFully(byte[] b) throws IOException {
                need(b.length);
                buf.get(b);
            }

            String readString() throws IOException {
                int n = readInt();
                if (n < 0) throw new IOException("a negative text length");
                need(2L * n);
                char[] chars = new char[n];
                buf.asCharBuffer().get(chars);
                buf.position(buf.position() + 2 * n);
                return new String(chars);
            }

            private void need(long n) throws IOException {
                if (buf.remaining() < n) throw new java.io.EOFException("the values end early");
            }
        }

        static In input(byte[] bytes) {
            return new In(bytes);
        }

        /** One value as the file library takes it: LocalDateTime for dates, BigDecimal for decimals. */
        static Object read(In in) throws IOException, SQLException {
            byte tag = in.readByte();
            switch (tag) {
                case 'N': in.readInt(); return null;
                case 'Z': return in.readBoolean();
                case 'I': return in.readInt();
                case 'J': return in.readLong();
                case 'F': return Float.intBitsToFloat(in.readInt());
                case 'D': return Double.longBitsToDouble(in.readLong());
                case 'S': return readString(in);
                case 'M': return new BigDecimal(readString(in));
                case 'X': {
                    byte[] b = new byte[in.readInt()];
                    in.readFully(b);
                    return b;
                }
                case 'T': {
                    return readDateTime(in);
                }
                default:
                    throw new SQLException("unknown value kind " + (char) tag, "07006", 0);
            }
        }

        // A date on the wire: year, month, day, hour, minute, second, nanoseconds.
        private static LocalDateTime readDateTime(In in) throws IOException {
            int year = in.readInt();
            int month = in.readByte(), day = in.readByte();
            int hour = in.readByte(), minute = in.readByte(), second = in.readByte();
            return LocalDateTime.of(year, month, day, hour, minute, second, in.readInt());
        }

        private static String readString(In in) throws IOException {
            return in.readString();
        }

        /** Binds a Wire list (count, then values) to the statement's marks in order. */
        static void bind(PreparedStatement ps, byte[] params) throws Exception {
            In in = new In(params);
            int n = in.readInt();
            for (int i = 1; i <= n; i++) {
                byte tag = in.readByte();
                switch (tag) {
                    case 'N':
                        ps.setNull(i, in.readInt());
                        break;
                    case 'Z':
                        ps.setBoolean(i, in.readBoolean());
                        break;
                    case 'I':
                        ps.setInt(i, in.readInt());
                        break;
                    case 'J':
                        ps.setLong(i, in.readLong());
                        break;
                    case 'F':
                        ps.setFloat(i, Float.intBitsToFloat(in.readInt()));
                        break;
                    case 'D':
                        ps.setDouble(i, Double.longBitsToDouble(in.readLong()));
                        break;
                    case 'S':
                        ps.setString(i, readString(in));
                        break;
                    case 'M':
                        ps.setBigDecimal(i, new BigDecimal(readString(in)));
                        break;
                    case 'X': {
                        byte[] b = new byte[in.readInt()];
                        in.readFully(b);
                        ps.setBytes(i, b);
                        break;
                    }
                    case 'T': {
                        ps.setTimestamp(i, Timestamp.valueOf(readDateTime(in)));
                        break;
                    }
                    default:
                        throw new SQLException("unknown parameter kind " + (char) tag, "07006", 0);
                }
            }
        }
    }
}
