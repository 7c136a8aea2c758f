package zolsdk.jet;

import java.nio.ByteBuffer;
import java.nio.CharBuffer;
import java.nio.charset.Charset;
import java.nio.charset.CharsetDecoder;
import java.nio.charset.CharsetEncoder;
import java.nio.charset.CoderResult;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;

/**
 * The charset of a Windows code page number, as Windows reads it. The
 * single-byte pages (874, 1250 to 1258) have a few bytes that map to no
 * letter; Windows gives them back as the control character of the same
 * number (0x81 is U+0081), where the JDK would give U+FFFD and lose them.
 */
final class CodePages {
    private CodePages() {}

    static Charset charset(int codePage) {
        Charset base = null;
        for (String name : new String[] {"windows-" + codePage, "x-windows-" + codePage, "Cp" + codePage}) {
            try {
                base = Charset.forName(name);
                break;
            } catch (RuntimeException e) {
                // Not this spelling.
            }
        }
        if (base == null) base = Charset.forName("windows-1252");
        return isSingleByte(base) ? new SingleByte(base) : base;
    }

    private static boolean isSingleByte(Charset cs) {
        return cs.newEncoder().maxBytesPerChar() == 1.0f;
    }

    /** A single-byte code page as a table both ways. */
    static final class SingleByte extends Charset {
        private final char[] toChar = new char[256];
        private final byte[] toByte = new byte[65536];
        private final boolean[] mapped = new boolean[65536];

        SingleByte(Charset base) {
            super("x-zolsdk-" + base.name(), null);
            for (int b = 0; b < 256; b++) {
                String s = new String(new byte[] {(byte) b}, base);
                char c = s.length() == 1 && s.charAt(0) != '\uFFFD' ? s.charAt(0) : (char) b;
                toChar[b] = c;
                if (!mapped[c]) {
                    mapped[c] = true;
                    toByte[c] = (byte) b;
                }
            }
        }

        @Override
        public boolean contains(Charset cs) {
            return cs == this || cs == StandardCharsets.US_ASCII;
        }

        @Override
        public CharsetDecoder newDecoder() {
            return new CharsetDecoder(this, 1f, 1f) {
                @Override
                protected CoderResult decodeLoop(ByteBuffer in, CharBuffer out) {
                    while (in.hasRemaining()) {
                        if (!out.hasRemaining()) return CoderResult.OVERFLOW;
                        out.put(toChar[in.get() & 0xFF]);
                    }
                    return CoderResult.UNDERFLOW;
                }
            };
        }

        @Override
        public CharsetEncoder newEncoder() {
            byte[] replacement = {(byte) '?'};
            return new CharsetEncoder(this, 1f, 1f, replacement) {
                @Override
                protected CoderResult encodeLoop(CharBuffer in, ByteBuffer out) {
                    while (in.hasRemaining()) {
                        char c = in.get();
                        if (!mapped[c]) {
                            in.position(in.position() - 1);
                            return CoderResult.unmappableForLength(1);
                        }
                        if (!out.hasRemaining()) {
                            in.position(in.position() - 1);
                            return CoderResult.OVERFLOW;
                        }
                        out.put(toByte[c]);
                    }
                    return CoderResult.UNDERFLOW;
                }

                @Override
                public boolean isLegalReplacement(byte[] repl) {
                    return Arrays.equals(repl, replacement);
                }
            };
        }
    }
}
