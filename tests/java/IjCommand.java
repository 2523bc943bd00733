import ij.IJ;
import ij.ImagePlus;
import ij.Menus;
import ij.measure.ResultsTable;
import ij.process.ByteProcessor;
import java.awt.HeadlessException;
import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import orva.Settings;
import orva.VoteCenter;
import orva.VoteSettings;

/** The ImageJ commands, the table of centers and the same centers by the C++ interface. */
final class IjCommand {
  static final String NAME = "Circular Voting...";
  static final String FIND = "Find Objects...";
  static final String SEGMENT = "Segment Objects...";

  private IjCommand() {}

  /** ImageJ without a screen has no menu of its own, so the commands are entered by hand. */
  @SuppressWarnings("unchecked") // ImageJ's table has no element types
  static void registerWithoutScreen() {
    try {
      IJ.run("anything");
    } catch (HeadlessException e) {
      // The menu bar needs a screen. The table of commands is there.
    }
    Menus.getCommands().put(NAME, "orva.imagej.CircularVotingPlugin");
    Menus.getCommands().put(FIND, "orva.imagej.FindObjectsPlugin");
    Menus.getCommands().put(SEGMENT, "orva.imagej.SegmentObjectsPlugin");
  }

  static Path sample(String name) {
    return Path.of(System.getProperty("orva.source"), "data/images", name + ".pgm");
  }

  static ImagePlus open(String name) {
    return IJ.openImage(sample(name).toString());
  }

  /** The rows of the results table: slice, x, y and weight. */
  static List<String> rows() {
    ResultsTable table = ResultsTable.getResultsTable();
    List<String> rows = new ArrayList<>();
    for (int i = 0; i < table.size(); i++) {
      rows.add(row((int) table.getValue("slice", i),
          new VoteCenter((int) table.getValue("x", i), (int) table.getValue("y", i),
              (float) table.getValue("weight", i))));
    }
    return rows;
  }

  private static String row(int slice, VoteCenter c) {
    return slice + " " + c.x() + " " + c.y() + " " + c.weight();
  }

  /** What ImageJ prints meanwhile. */
  static String printed(Runnable action) {
    PrintStream usual = System.out;
    ByteArrayOutputStream bytes = new ByteArrayOutputStream();
    System.setOut(new PrintStream(bytes, true));
    try {
      action.run();
    } finally {
      System.setOut(usual);
    }
    return bytes.toString();
  }

  static List<String> run(ImagePlus image, String options) {
    IJ.run(image, NAME, options);
    return rows();
  }

  static List<String> expected(int slice, Path image, int radius, int threshold, int scale,
      String... dark) throws Exception {
    Settings settings = new Settings(radius, threshold, scale);
    return Expected.centers(image, settings, List.of(dark).contains("dark"))
        .stream()
        .map(c -> row(slice, new VoteCenter(c.x(), c.y(), c.weight())))
        .toList();
  }

  /** By the orva command, of which the ImageJ command has its settings. */
  static List<String> expected(int slice, Path image, VoteSettings settings) throws Exception {
    return Expected.centers(image, settings).stream().map(c -> row(slice, c)).toList();
  }

  /** Spots of a radius of 6 pixels on black. */
  static ByteProcessor spots(int width, int height, int... xy) {
    ByteProcessor ip = new ByteProcessor(width, height);
    ip.setValue(200);
    for (int i = 0; i < xy.length; i += 2) ip.fillOval(xy[i] - 6, xy[i + 1] - 6, 13, 13);
    return ip;
  }
}
