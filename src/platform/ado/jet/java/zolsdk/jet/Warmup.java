package zolsdk.jet;

import java.io.ByteArrayOutputStream;
import java.io.DataOutputStream;
import java.io.File;

/**
 * Run once at build time, under -XX:ArchiveClassesAtExit, to load the
 * classes that a first statement loads: a new file, a table made through
 * the driver, rows written and read with the file library, a statement
 * with a bound text. The archive it leaves is what the provider's JVM maps
 * at start.
 */
public final class Warmup {
    private Warmup() {}

    public static void main(String[] args) throws Exception {
        File file = new File(args[0], "warmup.mdb");
        JetBridge.create(file.getPath());
        JetBridge.Link link = JetBridge.open(file.getPath(), "");
        link.execute("CREATE TABLE [t] ([id] LONG, [s] VARCHAR(20), [d] DOUBLE, [w] DATETIME)", null, true).close();
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        DataOutputStream out = new DataOutputStream(bytes);
        out.writeInt(1);
        out.writeInt(2);
        out.writeByte('I');
        out.writeInt(1);
        out.writeByte('S');
        out.writeInt(1);
        out.writeChars("a");
        link.addRows("t", new String[] {"id", "s"}, bytes.toByteArray());
        JetBridge.Result r = link.select("t", null);
        r.columns();
        r.fetch(10);
        r.close();
        ByteArrayOutputStream p = new ByteArrayOutputStream();
        DataOutputStream po = new DataOutputStream(p);
        po.writeInt(1);
        po.writeByte('S');
        po.writeInt(1);
        po.writeChars("a");
        JetBridge.Result q = link.execute("SELECT [id], [s] FROM [t] WHERE [s] = ?", p.toByteArray(), false);
        q.columns();
        q.fetch(10);
        q.close();
        link.tables();
        link.columns(null);
        link.indexes(null);
        link.close();
        JetBridge.release(file.getPath());
        file.delete();
        System.exit(0);
    }
}
