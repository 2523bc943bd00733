import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.Executer;
import ij.IJ;
import ij.ImageJ;
import ij.ImagePlus;
import ij.ImageStack;
import ij.Menus;
import ij.gui.GenericDialog;
import ij.gui.PointRoi;
import ij.gui.Roi;
import ij.plugin.filter.Analyzer;
import ij.plugin.frame.Recorder;
import java.awt.Button;
import java.awt.Checkbox;
import java.awt.Color;
import java.awt.Menu;
import java.awt.MenuBar;
import java.awt.Point;
import java.awt.Rectangle;
import java.awt.image.BufferedImage;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.TimeUnit;
import java.util.function.Predicate;
import java.util.stream.IntStream;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import orva.VoteSettings;
import orva.VoteSettings.Polarity;

/** The menu, the dialog, the preview and the recorder, on a screen. */
class IjDisplayTest {
  private static final String SAMPLE = "dsb_sparse_a";
  private static Path home;
  private static ImageJ imagej;

  @BeforeAll
  static void start() throws Exception {
    home = IjScreen.install();
    imagej = IjScreen.start(home);
  }

  @AfterAll
  static void remove() throws Exception {
    IjScreen.remove(home);
  }

  @AfterEach
  void close() throws Exception {
    GenericDialog open = IjScreen.openDialog();
    if (open != null)
      IjScreen.press(open.getButtons()[1]);
    IjScreen.closeImages();
  }

  private static ImagePlus show(ImagePlus image) {
    image.show();
    return image;
  }

  /** As a click in the menu does. */
  private static GenericDialog call(ImagePlus image) throws Exception {
    Analyzer.setUnsavedMeasurements(false); // else ImageJ asks whether to save the former table
    new Executer(IjCommand.NAME, image);
    return IjScreen.dialog();
  }

  private static void fill(GenericDialog dialog, String radius, String threshold, String sigma)
      throws Exception {
    IjScreen.type(dialog, 0, radius);
    IjScreen.type(dialog, 1, threshold);
    IjScreen.type(dialog, 2, sigma);
  }

  private static Checkbox box(GenericDialog dialog, int i) {
    return (Checkbox) dialog.getCheckboxes().get(i);
  }

  private static Button ok(GenericDialog dialog) {
    return dialog.getButtons()[0];
  }

  private static Button cancel(GenericDialog dialog) {
    return dialog.getButtons()[1];
  }

  private static VoteSettings settings(int radius, float threshold, float sigma) {
    return VoteSettings.ofRadius(radius).withRelativeThreshold(threshold).withSigma(sigma);
  }

  private static List<String> expected(VoteSettings settings) throws Exception {
    List<String> rows = IjCommand.expected(1, IjCommand.sample(SAMPLE), settings);
    assertFalse(rows.isEmpty());
    return rows;
  }

  @Test
  void theMenuHasTheCommands() {
    assertEquals("orva.imagej.FindObjectsPlugin", Menus.getCommands().get(IjCommand.FIND));
    assertEquals("orva.imagej.SegmentObjectsPlugin", Menus.getCommands().get(IjCommand.SEGMENT));
    assertEquals("orva.imagej.CircularVotingPlugin", Menus.getCommands().get(IjCommand.NAME));
    MenuBar bar = Menus.getMenuBar();
    Menu plugins =
        menu(IntStream.range(0, bar.getMenuCount()).mapToObj(bar::getMenu).toList(), "Plugins");
    Menu orva = menu(IntStream.range(0, plugins.getItemCount())
                         .mapToObj(plugins::getItem)
                         .filter(Menu.class ::isInstance)
                         .map(Menu.class ::cast)
                         .toList(),
        "Orva");
    assertEquals(List.of(IjCommand.FIND, IjCommand.SEGMENT, IjCommand.NAME),
        IntStream.range(0, orva.getItemCount()).mapToObj(i -> orva.getItem(i).getLabel()).toList());
  }

  private static Menu menu(List<Menu> menus, String label) {
    return menus.stream().filter(m -> m.getLabel().equals(label)).findFirst().orElseThrow();
  }

  @Test
  void okRunsWithTheValuesOfTheDialog() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    GenericDialog dialog = call(image);
    assertEquals(3, dialog.getNumericFields().size());
    assertEquals(List.of("Dark objects", " Preview"),
        List.of(box(dialog, 0).getLabel(), box(dialog, 1).getLabel()));
    fill(dialog, "18", "0.25", "2");
    IjScreen.finish(image, ok(dialog));
    List<String> expected = expected(settings(18, 0.25f, 2));
    assertEquals(expected, IjCommand.rows());
    assertEquals(expected.size(), image.getRoi().size());
    assertEquals(1, image.getOverlay().size());

    dialog = call(image);
    fill(dialog, "18", "0.25", "0");
    IjScreen.finish(image, ok(dialog));
    assertEquals(
        expected(VoteSettings.ofRadius(18).withRelativeThreshold(0.25f)), IjCommand.rows());
  }

  @Test
  void cancelKeepsTheSelectionAndTheTable() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    Roi former = new Roi(10, 10, 100, 120);
    image.setRoi(former);
    GenericDialog dialog = call(image);
    IjScreen.tick(dialog.getPreviewCheckbox(), true);
    IjScreen.await("the preview", () -> image.getRoi() instanceof PointRoi);
    IjScreen.finish(image, cancel(dialog));
    assertEquals(former, image.getRoi());
    assertNull(image.getOverlay());
    assertEquals(List.of(), IjCommand.rows());
  }

  @Test
  void thePreviewFollowsTheValuesAndGoesWithItsTick() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    GenericDialog dialog = call(image);
    fill(dialog, "20", "0.2", "2");
    List<String> many = expected(settings(20, 0.2f, 2));
    List<String> few = expected(settings(20, 0.7f, 2));
    IjScreen.tick(dialog.getPreviewCheckbox(), true);
    awaitPoints(image, many.size());
    IjScreen.type(dialog, 1, "0.7");
    assertTrue(few.size() < many.size());
    awaitPoints(image, few.size());
    IjScreen.tick(dialog.getPreviewCheckbox(), false);
    IjScreen.await("the end of the preview", () -> image.getRoi() == null);
    assertNull(image.getOverlay());
    assertEquals(List.of(), IjCommand.rows());
    IjScreen.tick(dialog.getPreviewCheckbox(), true);
    awaitPoints(image, few.size());
    IjScreen.finish(image, ok(dialog));
    assertEquals(few, IjCommand.rows());
  }

  private static void awaitPoints(ImagePlus image, int count) throws Exception {
    IjScreen.await(
        count + " points", () -> image.getRoi() instanceof PointRoi p && p.size() == count);
  }

  @Test
  void aValueOutOfItsRangeCannotBeAccepted() throws Exception {
    ImagePlus image = show(IjCommand.open(SAMPLE));
    GenericDialog dialog = call(image);
    for (String wrong : List.of("0", "2.5", "abc", "")) {
      IjScreen.type(dialog, 0, wrong);
      IjScreen.await("no OK for " + wrong, () -> !ok(dialog).isEnabled());
      IjScreen.type(dialog, 0, "20");
      IjScreen.await("OK", () -> ok(dialog).isEnabled());
    }
    IjScreen.finish(image, cancel(dialog));
  }

  @Test
  void theRecorderKeepsTheOptions() throws Exception {
    Recorder recorder = new Recorder();
    try {
      ImagePlus image = show(IjCommand.open(SAMPLE));
      GenericDialog dialog = call(image);
      fill(dialog, "19", "0.2", "2");
      IjScreen.finish(image, ok(dialog));
      String options = "max_radius=19 relative_threshold=0.2 sigma=2";
      IjScreen.awaitRecord(recorder, IjCommand.NAME, options);

      ImageStack slices = new ImageStack(image.getWidth(), image.getHeight());
      for (int i = 0; i < 2; i++) slices.addSlice(image.getProcessor().duplicate());
      ImagePlus stack = show(new ImagePlus("stack", slices));
      dialog = call(stack);
      assertEquals(List.of("19", "0.20", "2.00"), IjScreen.texts(dialog));
      assertEquals("Stack of 2 images", box(dialog, 1).getLabel());
      IjScreen.tick(box(dialog, 0), true);
      IjScreen.tick(box(dialog, 1), true);
      IjScreen.finish(stack, ok(dialog));
      IjScreen.awaitRecord(
          recorder, IjCommand.NAME, "max_radius=19 relative_threshold=0.20 sigma=2 dark stack");
      assertEquals(2 * expected(settings(19, 0.2f, 2).withPolarity(Polarity.DARK)).size(),
          IjCommand.rows().size());

      dialog = call(stack);
      assertTrue(box(dialog, 0).getState() && box(dialog, 1).getState());
      IjScreen.tick(box(dialog, 0), false);
      IjScreen.tick(box(dialog, 1), false);
      IjScreen.finish(stack, ok(dialog));
      assertEquals(expected(settings(19, 0.2f, 2)), IjCommand.rows());
    } finally {
      recorder.close();
    }
  }

  @Test
  void imageJRunsAMacroInItsBatchMode() throws Exception {
    Path macro = home.resolve("macro.ijm");
    Path rows = home.resolve("rows.csv");
    Files.writeString(macro,
        "open('" + IjCommand.sample(SAMPLE) + "');\n"
            + "run('Circular Voting...', 'max_radius=20 threshold=80 scale=2');\n"
            + "saveAs('Results', '" + rows + "');\n");
    ProcessBuilder builder =
        new ProcessBuilder(Path.of(System.getProperty("java.home"), "bin/java").toString(),
            "-Duser.home=" + home, "-Dplugins.dir=" + home, "-jar",
            System.getProperty("orva.ij.jar"), "-batch", macro.toString());
    Process process = builder.inheritIO().start();
    try {
      assertTrue(process.waitFor(2, TimeUnit.MINUTES));
    } finally {
      process.destroyForcibly();
    }
    assertEquals(IjCommand.expected(1, IjCommand.sample(SAMPLE), 20, 80, 2),
        Files.readAllLines(rows).stream().skip(1).map(IjDisplayTest::withoutRow).toList());
  }

  /** The first column of the file counts its rows. The weights are whole by the former keys. */
  private static String withoutRow(String line) {
    return line.substring(line.indexOf(',') + 1).replace(',', ' ') + ".0";
  }

  @Test
  void theScreenshotsShowTheObjects() throws Exception {
    Path picture = home.resolve("imagej.png");
    assertShown(picture, IjScreenshot.takeCircles(picture), 20);
    close();
    assertShown(picture, IjScreenshot.takeRegions(picture), 10);
  }

  private static void assertShown(Path picture, List<Point> marks, int min) throws Exception {
    BufferedImage screen = ImageIO.read(picture.toFile());
    assertTrue(marks.size() > min, marks::toString);
    for (Point mark : marks)
      assertTrue(hasColour(screen, mark, 2, c -> c.getRed() - c.getBlue() > 100), "" + mark);
    assertTrue(Files.size(picture) < 300_000);
  }

  /** Whether a pixel near the mark has the colour. The image itself is grey. */
  private static boolean hasColour(
      BufferedImage screen, Point mark, int distance, Predicate<Color> colour) {
    Rectangle near =
        new Rectangle(mark.x - distance, mark.y - distance, 2 * distance + 1, 2 * distance + 1)
            .intersection(new Rectangle(screen.getWidth(), screen.getHeight()));
    return IntStream.range(0, near.width * near.height)
        .mapToObj(i -> new Color(screen.getRGB(near.x + i % near.width, near.y + i / near.width)))
        .anyMatch(colour);
  }

  @Test
  void theProgressBarMovesInAStack() throws Exception {
    assertNotNull(imagej.getProgressBar());
    var shown = imagej.getProgressBar().getClass().getDeclaredField("showBar");
    shown.setAccessible(true);
    boolean[] moved = new boolean[1];
    ImageStack slices = new ImageStack(200, 200) {
      @Override
      public Object getPixels(int n) {
        IJ.wait(200); // ImageJ leaves out what follows the last change of the bar sooner
        moved[0] |= isTrue(shown);
        return super.getPixels(n);
      }
    };
    for (int i = 0; i < 12; i++) slices.addSlice(IjCommand.spots(200, 200, 60, 60));
    assertFalse(moved[0]);
    IjCommand.run(new ImagePlus("slices", slices), "max_radius=8 stack");
    assertTrue(moved[0]);
    assertEquals(12, IjCommand.rows().size());
  }

  private static boolean isTrue(java.lang.reflect.Field field) {
    try {
      return field.getBoolean(imagej.getProgressBar());
    } catch (IllegalAccessException e) {
      throw new IllegalStateException(e);
    }
  }
}
