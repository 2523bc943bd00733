import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.IJ;
import ij.ImagePlus;
import ij.gui.OvalRoi;
import ij.gui.Overlay;
import ij.gui.PointRoi;
import ij.gui.PolygonRoi;
import ij.gui.Roi;
import ij.gui.ShapeRoi;
import ij.plugin.frame.RoiManager;
import ij.process.ByteProcessor;
import ij.process.ImageProcessor;
import java.awt.Color;
import java.awt.Point;
import java.awt.Rectangle;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import orva.FindSettings;
import orva.VoteSettings;

/** The ROI sets of the orva command in ImageJ's ROI manager, which needs a screen. */
class IjRoiSetDisplayTest {
  private static final String SAMPLE = "dsb_dense_a";
  private static Path folder;
  private RoiManager manager;

  @BeforeAll
  static void makeFolder() throws Exception {
    folder = IjScreen.install();
    IjScreen.start(folder);
  }

  @AfterAll
  static void removeFolder() throws Exception {
    IjScreen.remove(folder);
  }

  @AfterEach
  void close() {
    if (manager != null)
      manager.close();
    IjScreen.closeImages();
  }

  private static void orva(Object... arguments) throws Exception {
    List<String> command = new ArrayList<>(List.of(System.getProperty("orva.command")));
    for (Object argument : arguments) command.add(argument.toString());
    Program.Result result = Program.run(command);
    assertEquals(0, result.status(), () -> command + " " + result.err());
  }

  /** What the ROI manager makes of the file. */
  private Roi[] open(Path file) {
    manager = RoiManager.getRoiManager();
    manager.reset();
    assertTrue(manager.runCommand("Open", file.toString()));
    return manager.getRoisAsArray();
  }

  private static List<String> names(Roi[] rois) {
    return Arrays.stream(rois).map(Roi::getName).toList();
  }

  private static List<String> numbers(int count) {
    List<String> numbers = new ArrayList<>();
    for (int i = 1; i <= count; i++) numbers.add("" + i);
    return numbers;
  }

  @Test
  void centersAreOneMultiPoint() throws Exception {
    Path file = folder.resolve("centers.zip");
    Path sample = IjCommand.sample(SAMPLE);
    orva("vote", "--centers", file, sample);
    Roi[] rois = open(file);
    assertEquals(1, rois.length);
    PointRoi points = (PointRoi) rois[0];
    List<Point> expected = Expected.centers(sample, VoteSettings.ofRadius(20))
                               .stream()
                               .map(c -> new Point(c.x(), c.y()))
                               .toList();
    assertEquals(expected, Arrays.asList(points.getContainedPoints()));
    assertEquals("1-" + expected.size(), points.getName());
    assertEquals(0, points.getPosition());
  }

  @Test
  void circlesHaveTheirBoxes() throws Exception {
    Path file = folder.resolve("circles.zip");
    Path sample = IjCommand.sample(SAMPLE);
    orva("find", "--quiet", "--table", file, sample);
    Roi[] rois = open(file);
    List<List<String>> objects = FoundByCommand.in(sample, new FindSettings()).objects();
    assertEquals(numbers(objects.size()), names(rois));
    for (int i = 0; i < rois.length; i++) {
      assertTrue(rois[i] instanceof OvalRoi);
      var box = rois[i].getFloatBounds();
      double radius = Double.parseDouble(objects.get(i).get(2));
      assertEquals(Double.parseDouble(objects.get(i).get(0)) + 0.5, box.getCenterX(), 1e-3);
      assertEquals(Double.parseDouble(objects.get(i).get(1)) + 0.5, box.getCenterY(), 1e-3);
      assertEquals(2 * radius, box.width, 2e-3);
      assertEquals(2 * radius, box.height, 2e-3);
    }
  }

  /** Each label filled by ImageJ from its ROI. */
  private static int[] filled(Roi[] rois, int width, int height) {
    int[] labels = new int[width * height];
    for (int k = 0; k < rois.length; k++) {
      Rectangle box = rois[k].getBounds();
      ImageProcessor mask = rois[k].getMask();
      for (int y = 0; y < box.height; y++) {
        for (int x = 0; x < box.width; x++) {
          if (mask == null || mask.get(x, y) != 0)
            labels[(box.y + y) * width + box.x + x] = k + 1;
        }
      }
    }
    return labels;
  }

  private static int[] pixels(ImagePlus image) {
    ImageProcessor ip = image.getProcessor();
    int[] pixels = new int[ip.getPixelCount()];
    for (int i = 0; i < pixels.length; i++) pixels[i] = ip.get(i);
    return pixels;
  }

  @Test
  void segmentsCoverThePixelsOfTheirLabels() throws Exception {
    Path file = folder.resolve("segments.zip");
    Path labels = folder.resolve("labels.tif");
    orva("segment", "--quiet", "--table", file, "--labels", labels, IjCommand.sample(SAMPLE));
    Roi[] rois = open(file);
    ImagePlus expected = IJ.openImage(labels.toString());
    assertTrue(rois.length > 100);
    assertEquals(numbers(rois.length), names(rois));
    assertTrue(Arrays.stream(rois).anyMatch(roi -> roi.getType() == Roi.TRACED_ROI));
    for (Roi roi : rois) assertTrue(roi instanceof PolygonRoi || roi instanceof ShapeRoi);
    assertArrayEquals(pixels(expected), filled(rois, expected.getWidth(), expected.getHeight()));
  }

  /** What the ROI manager makes of shapes that no sample image has. */
  private Roi[] scene(String name) throws Exception {
    Path file = folder.resolve(name + ".zip");
    Process program = new ProcessBuilder(System.getProperty("orva.roiScenes"), name)
                          .redirectOutput(file.toFile())
                          .start();
    assertEquals(0, program.waitFor());
    return open(file);
  }

  @Test
  void holesAndPartsAreCompositeRois() throws Exception {
    Roi[] rois = scene("holes");
    assertEquals(2, rois.length);
    for (Roi roi : rois) assertTrue(roi instanceof ShapeRoi);
    assertArrayEquals(
        new int[] {1, 1, 1, 0, 0, 0, 1, 0, 1, 0, 2, 0, 1, 1, 1, 0, 0, 2, 0, 0, 0, 0, 0, 0},
        filled(rois, 6, 4));
  }

  @Test
  void moreThan65535PointsAreRead() throws Exception {
    Point[] points = ((PointRoi) scene("many")[0]).getContainedPoints();
    assertEquals(70000, points.length);
    assertEquals(new Point(12, 7), points[0]);
    assertEquals(new Point(5, 6), points[69999]);
  }

  @Test
  void pointsBeyond32767AreRead() throws Exception {
    assertArrayEquals(new Point[] {new Point(40000, 7), new Point(3, 20)},
        ((PointRoi) scene("wide")[0]).getContainedPoints());
  }

  /** Spots at (30 + 20 z, 25 + 30 t), of radius 6. */
  private static ImagePlus stack(int slices, int frames) {
    ImagePlus image = IJ.createHyperStack("stack", 120, 90, 1, slices, frames, 8);
    for (int t = 0; t < frames; t++) {
      for (int z = 0; z < slices; z++) {
        int index = image.getStackIndex(1, z + 1, t + 1);
        image.getStack().setProcessor(IjCommand.spots(120, 90, 30 + 20 * z, 25 + 30 * t), index);
      }
    }
    return image;
  }

  /** The ROIs of the spots of a stack, with this option for the slices. */
  private Roi[] foundIn(ImagePlus image, String z) throws Exception {
    Path input = folder.resolve("stack.tif");
    Path file = folder.resolve("stack.zip");
    IJ.saveAsTiff(image, input.toString());
    orva("find", "--quiet", "--z", z, "--radius", "6", "--table", file, input);
    return open(file);
  }

  @Test
  void circlesOfAHyperstackHavePositions() throws Exception {
    ImagePlus image = stack(3, 2);
    Roi[] rois = foundIn(image, "all");
    assertEquals(6, rois.length);
    assertEquals(numbers(6), names(rois));
    for (Roi roi : rois) {
      assertTrue(roi.hasHyperStackPosition());
      assertEquals(0, roi.getCPosition());
      assertEquals(30.5 + 20 * (roi.getZPosition() - 1), roi.getFloatBounds().getCenterX(), 1);
      assertEquals(25.5 + 30 * (roi.getTPosition() - 1), roi.getFloatBounds().getCenterY(), 1);
    }
    image.show();
    for (int i = 0; i < rois.length; i++) {
      manager.select(image, i);
      assertEquals(rois[i].getZPosition(), image.getSlice());
      assertEquals(rois[i].getTPosition(), image.getFrame());
    }
  }

  /** A projection has no slice, but a time: shown on every slice of it. */
  @Test
  void circlesOfProjectionsHaveTheirTime() throws Exception {
    ImagePlus image = stack(3, 2);
    Roi[] rois = foundIn(image, "max");
    assertEquals(6, rois.length);
    image.show();
    for (int i = 0; i < rois.length; i++) {
      assertTrue(rois[i].hasHyperStackPosition());
      assertEquals(0, rois[i].getCPosition());
      assertEquals(0, rois[i].getZPosition());
      assertEquals(
          25.5 + 30 * (rois[i].getTPosition() - 1), rois[i].getFloatBounds().getCenterY(), 1);
      manager.select(image, i);
      assertEquals(rois[i].getTPosition(), image.getFrame());
    }
  }

  @Test
  void pointsOfAStackHaveTheirSlice() throws Exception {
    Path input = folder.resolve("stack.tif");
    Path file = folder.resolve("stack.zip");
    ImagePlus image = stack(3, 1);
    IJ.saveAsTiff(image, input.toString());
    orva("vote", "--quiet", "--z", "all", "--max-radius", "9", "--centers", file, input);
    Roi[] rois = open(file);
    assertEquals(List.of("1-1", "2-2", "3-3"), names(rois));
    for (int i = 0; i < rois.length; i++) {
      assertEquals(i + 1, rois[i].getPosition());
      assertEquals(30.0 + 20 * i, rois[i].getBounds().x, 2);
    }
    image.show();
    manager.select(image, 2);
    assertEquals(3, image.getCurrentSlice());
  }

  /** The pixels that the outlines change, which lie on the objects' edges. */
  @Test
  void theOverlayIsDrawnAtTheObjects() throws Exception {
    Path file = folder.resolve("overlay.zip");
    Path spots = folder.resolve("spots.pgm");
    ByteProcessor ip = IjCommand.spots(120, 90, 30, 25, 80, 60);
    IJ.saveAs(new ImagePlus("spots", ip), "pgm", spots.toString());
    orva("segment", "--quiet", "--radius", "6", "--table", file, spots);
    Roi[] rois = open(file);
    assertEquals(2, rois.length);
    ImagePlus image = IJ.openImage(spots.toString());
    image.setOverlay(overlay(rois));
    ImageProcessor drawn = image.flatten().getProcessor();
    int marked = 0;
    for (int y = 0; y < 90; y++) {
      for (int x = 0; x < 120; x++) {
        Color color = new Color(drawn.getPixel(x, y));
        if (color.getBlue() == color.getRed())
          continue;
        marked++;
        double distance = Math.min(Math.hypot(x - 30, y - 25), Math.hypot(x - 80, y - 60));
        assertEquals(6.5, distance, 2.0);
      }
    }
    assertFalse(marked < 40, "only " + marked + " pixels");
  }

  private static Overlay overlay(Roi[] rois) {
    Overlay overlay = new Overlay();
    for (Roi roi : rois) {
      roi.setStrokeColor(Color.YELLOW);
      overlay.add(roi);
    }
    return overlay;
  }
}
