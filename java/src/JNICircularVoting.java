import java.io.File;
import java.io.IOException;
import java.io.InputStream;
import java.io.OutputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import orva.NativeDetection;
import orva.NativeVoting;

/**
 * The native circular voting, as the library offers it. It checks nothing; {@link
 * orva.CircularVoting} is the safe way to call it.
 *
 * <p>The class lies in the default package because the library's entry is named after it.
 */
public class JNICircularVoting {
  private static final String LIBRARY = System.mapLibraryName("orva");
  private static final String PACKED = "/natives/linux_64/liborva.so";

  private static boolean loaded;

  /**
   * Loads the native library if that has not happened yet: the first one of the folders of {@code
   * java.library.path} that holds the entries, else the jar's own, by way of a temporary file that
   * only this user can read and that is gone when the constructor returns.
   *
   * @throws UnsatisfiedLinkError when there is none; the message lists every path tried
   */
  public JNICircularVoting() {
    synchronized (JNICircularVoting.class) {
      if (loaded)
        return;
      List<String> tried = new ArrayList<>();
      loaded = loadInstalled(tried) || loadPacked(tried);
      if (!loaded) {
        throw new UnsatisfiedLinkError("The native library of orva could not be loaded. Tried:\n  "
            + String.join("\n  ", tried));
      }
    }
  }

  /**
   * Finds bright round objects. Null or short arrays and sizes below 0 can end the whole process.
   * Each call keeps twice {@code height * width} bytes for ever; this is intended.
   *
   * @param pixels grey values, row by row; the lowest 8 bits of each count
   * @param height number of rows
   * @param width number of columns
   * @param unused1 not used
   * @param maxRadius farthest distance of a vote in pixels
   * @param unused2 not used
   * @param unused3 not used
   * @param threshold votes above it make a center
   * @param scale sigma of the gradient in pixels
   * @return row, column and weight of each center; without any, the one triple (height / 3, width /
   *     3, 0)
   */
  public native int[] compute(int[] pixels, int height, int width, int unused1, int maxRadius,
      int unused2, int unused3, int threshold, int scale);

  private boolean loadInstalled(List<String> tried) {
    String path = System.getProperty("java.library.path", "");
    for (String folder : path.split(File.pathSeparator)) {
      if (folder.isEmpty())
        continue; // File would take it for the root folder
      File file = new File(folder, LIBRARY).getAbsoluteFile();
      if (!file.exists()) {
        tried.add(file + ": not there");
      } else if (load(file.toPath(), tried)) {
        return true;
      }
    }
    return false;
  }

  private boolean loadPacked(List<String> tried) {
    try (InputStream in = JNICircularVoting.class.getResourceAsStream(PACKED)) {
      if (in == null) {
        tried.add(PACKED + " of the class path: not there");
        return false;
      }
      return loadCopy(in, tried);
    } catch (IOException e) {
      tried.add(PACKED + " of the class path, as a file in " + temporaryFolder() + ": " + e);
      return false;
    }
  }

  private boolean loadCopy(InputStream in, List<String> tried) throws IOException {
    String version = orva.Center.class.getPackage().getImplementationVersion();
    Path copy = Files.createTempFile("liborva-" + version + "-", ".so");
    try {
      try (OutputStream out = Files.newOutputStream(copy)) {
        in.transferTo(out);
      }
      return load(copy, tried);
    } finally {
      Files.deleteIfExists(copy); // what is loaded stays
    }
  }

  private boolean load(Path file, List<String> tried) {
    try {
      System.load(file.toString());
      // A library built without Java has no entry, and an older one not all of them.
      compute(new int[0], 0, 0, 0, 1, 0, 0, 0, 1);
      NativeVoting.findCenters(
          new float[0], 0, 0, 0, 1, 1, -1, Float.NaN, Float.NaN, 0, Float.NaN, 1, false, 1);
      NativeDetection.findObjects(new float[0], 0, 0, Float.NaN, Float.NaN, Float.NaN, -1, 0.5f);
      NativeDetection.segmentObjects(
          new float[0], 0, 0, new int[0], Float.NaN, Float.NaN, Float.NaN, -1, 0.5f, 0, 1, false);
      return true;
    } catch (UnsatisfiedLinkError | RuntimeException e) { // the latter where access is denied
      tried.add(file + ": " + e.getMessage());
      return false;
    }
  }

  private static String temporaryFolder() {
    return System.getProperty("java.io.tmpdir");
  }
}
