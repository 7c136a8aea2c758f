package zolsdk.jet;

import io.github.spannm.jackcess.Database;
import io.github.spannm.jackcess.DatabaseBuilder;
import io.github.spannm.jackcess.DateTimeType;
import io.github.spannm.jackcess.impl.DatabaseImpl;

import java.io.File;
import java.io.IOException;
import java.nio.charset.Charset;

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
        return openFile(file, charset);
    }

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
