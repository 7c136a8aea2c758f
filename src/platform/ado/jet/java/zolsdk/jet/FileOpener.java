package zolsdk.jet;

import io.github.spannm.jackcess.Column;
import io.github.spannm.jackcess.DataType;
import io.github.spannm.jackcess.Database;
import io.github.spannm.jackcess.DatabaseBuilder;
import io.github.spannm.jackcess.DateTimeType;
import io.github.spannm.jackcess.PropertyMap;
import io.github.spannm.jackcess.impl.DatabaseImpl;

import java.io.File;
import java.io.IOException;
import java.nio.charset.Charset;
import java.util.ArrayList;
import java.util.IdentityHashMap;
import java.util.List;
import java.util.Map;

/**
 * Opens Access files for the provider and for the JDBC driver alike (the
 * driver is told to use this class), so that both read a file the same way.
 *
 * Jet 4 files hold text as UTF-16; Jet 3 (Access 97) files hold it in the
 * code page their header names, 1252 in Western files. The file library
 * would decode Jet 3 text in the JVM's default charset and turn every
 * character above 127 into U+FFFD.
 */
public final class FileOpener implements net.ucanaccess.jdbc.IJackcessOpenerInterface {
    public FileOpener() {}

    @Override
    public Database open(File file, String password) throws IOException {
        return open(file, password, null);
    }

    @Override
    public Database open(File file, String password, Charset charset) throws IOException {
        Database db = openFile(file, charset);
        exactSingles(db);
        return db;
    }

    /** Decimal places the driver's mirror gives a Single: enough for the smallest float's shortest text. */
    private static final byte SINGLE_PLACES = 46;

    /** Properties changed for the driver's load of a file, to be put back once it is loaded. */
    private static final Map<Database, List<Runnable>> LENT = new IdentityHashMap<>();

    /**
     * The driver mirrors a Single as a decimal with the column's number of
     * decimal places, 7 when the column leaves it to Access, and fills it
     * with the float's shortest text: 1.5E-10 would become 0 and criteria
     * would miss -0.00035134. While the driver loads the file, every Single
     * column says it keeps 46 places (in memory only); restoreProperties
     * puts back what the file says.
     */
    private static void exactSingles(Database db) throws IOException {
        List<Runnable> undo = new ArrayList<>();
        for (String name : db.getTableNames()) {
            for (Column c : db.getTable(name).getColumns()) {
                if (c.getType() != DataType.FLOAT) continue;
                PropertyMap p = c.getProperties();
                PropertyMap.Property was = p.get(DECIMAL_PLACES);
                p.put(DECIMAL_PLACES, DataType.BYTE, SINGLE_PLACES);
                if (was == null) undo.add(() -> p.remove(DECIMAL_PLACES));
                else undo.add(() -> p.put(DECIMAL_PLACES, was.getType(), was.getValue()));
            }
        }
        synchronized (LENT) {
            LENT.put(db, undo);
        }
    }

    /** Puts back the properties lent to the driver's load of the file. */
    static void restoreProperties(Database db) {
        List<Runnable> undo;
        synchronized (LENT) {
            undo = LENT.remove(db);
        }
        if (undo != null) undo.forEach(Runnable::run);
    }

    private static final String DECIMAL_PLACES = "DecimalPlaces";

    static Database openFile(File file, Charset charset) throws IOException {
        boolean readOnly = !file.canWrite();
        Database db = new DatabaseBuilder().withFile(file).withAutoSync(false).withReadOnly(readOnly)
                .withCharset(charset).open();
        try {
            if (db.getFileFormat() == Database.FileFormat.V1997) {
                Charset page = CodePages.charset(((DatabaseImpl) db).getDefaultCodePage());
                db.close();
                db = new DatabaseBuilder().withFile(file).withAutoSync(false).withReadOnly(true).withCharset(page).open();
            }
            db.setDateTimeType(DateTimeType.LOCAL_DATE_TIME);
            return db;
        } catch (IOException | RuntimeException e) {
            try {
                db.close();
            } catch (IOException ignored) {
                // The first failure is the one to report.
            }
            throw e;
        }
    }

    /** True for a Jet 3 (Access 97) file: the file library reads it and cannot write it. */
    static boolean isJet3(Database db) {
        try {
            return db.getFileFormat() == Database.FileFormat.V1997;
        } catch (IOException e) {
            return false;
        }
    }
}
