import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.CompositeImage;
import ij.IJ;
import ij.ImagePlus;
import ij.ImageStack;
import ij.VirtualStack;
import ij.gui.PointRoi;
import ij.gui.Roi;
import ij.process.ByteProcessor;
import ij.process.ImageProcessor;
import java.awt.event.KeyEvent;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;

/**
 * Stacks, without a screen. Slice n holds a spot at (30 + n, 40), the odd ones another at (80,
 * 30).
 */
class IjStackTest {
  private static final String OPTIONS = "max_radius=8 threshold=200 scale=1";

  @BeforeAll
  static void register() {
    System.setProperty("java.awt.headless", "true");
    IjCommand.registerWithoutScreen();
  }

  private static ByteProcessor slice(int n) {
    return n % 2 == 1 ? IjCommand.spots(120, 70, 30 + n, 40, 80, 30)
                      : IjCommand.spots(120, 70, 30 + n, 40);
  }

  private static ImagePlus stack(int slices) {
    ImageStack stack = new ImageStack(120, 70);
    for (int n = 1; n <= slices; n++) stack.addSlice(slice(n));
    return new ImagePlus("stack", stack);
  }

  /** Slice, x and y of the rows that slice n must give. */
  private static List<String> places(int n) {
    String first = n + " " + (30 + n) + " 40";
    return n % 2 == 1 ? List.of(n + " 80 30", first) : List.of(first);
  }

  private static List<String> allPlaces(int slices) {
    List<String> all = new ArrayList<>();
    for (int n = 1; n <= slices; n++) all.addAll(places(n));
    return all;
  }

  private static List<String> run(ImagePlus image, String options) {
    return IjCommand.run(image, options)
        .stream()
        .map(row -> row.substring(0, row.lastIndexOf(' ')))
        .toList();
  }

  private static List<String> points(PointRoi points) {
    List<String> all = new ArrayList<>();
    for (int i = 0; i < points.size(); i++) {
      all.add(points.getPointPosition(i) + " " + points.getContainedPoints()[i].x + " "
          + points.getContainedPoints()[i].y);
    }
    return all;
  }

  @Test
  void theWholeStackInTheOrderOfItsSlices() {
    ImagePlus image = stack(9);
    image.setSlice(4);
    assertEquals(allPlaces(9), run(image, OPTIONS + " stack"));
    assertEquals(allPlaces(9), points((PointRoi) image.getRoi()));
    assertEquals(9, image.getOverlay().size());
    for (int n = 1; n <= 9; n++) {
      Roi circles = image.getOverlay().get(n - 1);
      assertEquals(n, circles.getPosition());
      assertEquals(places(n), points((PointRoi) circles));
    }
    assertEquals(4, image.getCurrentSlice());
  }

  @Test
  void onlyTheCurrentSliceWithoutTheOption() {
    ImagePlus image = stack(5);
    image.setSlice(3);
    assertEquals(places(3), run(image, OPTIONS));
    assertEquals(places(3), points((PointRoi) image.getRoi()));
    assertEquals(1, image.getOverlay().size());
    assertEquals(3, image.getOverlay().get(0).getPosition());
  }

  @Test
  void theOverlayOfTheStackGivesWayToThatOfASlice() {
    ImagePlus image = stack(5);
    run(image, OPTIONS + " stack");
    run(image, OPTIONS);
    assertEquals(1, image.getOverlay().size());
  }

  @Test
  void aSingleImageIsNoStack() {
    assertEquals(places(1), run(new ImagePlus("one", slice(1)), OPTIONS + " stack"));
  }

  @Test
  void aSliceIsEqualToTheImageAlone() {
    ImagePlus image = stack(3);
    List<String> whole = IjCommand.run(image, OPTIONS + " stack");
    List<String> single = IjCommand.run(new ImagePlus("one", slice(3)), OPTIONS);
    assertEquals(single.stream().map(row -> row.replaceFirst("^1", "3")).toList(),
        whole.stream().filter(row -> row.startsWith("3 ")).toList());
  }

  @Test
  void aVirtualStack() {
    ImagePlus image = new ImagePlus("virtual", new OnDemand(6));
    assertEquals(allPlaces(6), run(image, OPTIONS + " stack"));
  }

  @Test
  void aHyperstackCountsItsSlicesThrough() {
    ImagePlus image = stack(8);
    image.setDimensions(2, 2, 2);
    image.setOpenAsHyperStack(true);
    assertTrue(image.isHyperStack());
    assertEquals(allPlaces(8), run(image, OPTIONS + " stack"));
    image.setPosition(1, 2, 2);
    assertEquals(places(7), run(image, OPTIONS));
  }

  /** The colours of channels and their tints are no part of the pixel values. */
  @Test
  void aChannelOfACompositeImageIsEqualToTheImageAlone() {
    CompositeImage image = new CompositeImage(stack(2), IJ.COMPOSITE);
    image.setC(2);
    List<String> single = IjCommand.run(new ImagePlus("one", slice(2)), OPTIONS);
    List<String> second = single.stream().map(row -> row.replaceFirst("^1", "2")).toList();
    assertEquals(second, IjCommand.run(image, OPTIONS));
    List<String> whole = IjCommand.run(image, OPTIONS + " stack");
    assertEquals(second, whole.stream().filter(row -> row.startsWith("2 ")).toList());
  }

  @Test
  void everyChannelCountsByItsOwnDisplayRange() {
    ImageStack stack = new ImageStack(120, 70);
    for (int n = 1; n <= 2; n++) {
      ImageProcessor ip = slice(n).convertToShortProcessor(false);
      ip.multiply(n == 1 ? 1 : 100);
      stack.addSlice(ip);
    }
    ImagePlus channels = new ImagePlus("channels", stack);
    channels.setDimensions(2, 1, 1);
    CompositeImage image = new CompositeImage(channels, IJ.COMPOSITE);
    for (int n = 2; n >= 1; n--) {
      image.setC(n);
      image.setDisplayRange(0, n == 1 ? 255 : 25599);
    }
    List<String> expected = new ArrayList<>(IjCommand.run(new ImagePlus("one", slice(1)), OPTIONS));
    for (String row : IjCommand.run(new ImagePlus("two", slice(2)), OPTIONS))
      expected.add(row.replaceFirst("^1", "2"));
    assertEquals(expected, IjCommand.run(image, OPTIONS + " stack"));
  }

  @Test
  void everySliceOf16BitsCountsByTheDisplayRangeOfTheStack() {
    ImageStack stack = new ImageStack(120, 70);
    for (int n = 1; n <= 3; n++) {
      ImageProcessor ip = slice(n).convertToShortProcessor(false);
      ip.multiply(100);
      ip.set(0, 0, n * 9000);
      stack.addSlice(ip);
    }
    ImagePlus image = new ImagePlus("16", stack);
    image.setDisplayRange(0, 25500);
    List<String> whole = IjCommand.run(image, OPTIONS + " stack");
    image.setSlice(2);
    image.setDisplayRange(0, 25500);
    List<String> second = IjCommand.run(image, OPTIONS);
    assertEquals(1, second.size());
    assertEquals(second, whole.stream().filter(row -> row.startsWith("2 ")).toList());
  }

  @Test
  void escapeEndsTheSearchAndChangesNothing() {
    ImagePlus image = stack(2);
    List<String> former = IjCommand.run(image, OPTIONS);
    ImagePlus interrupted = new ImagePlus("escape", new OnDemand(200) {
      @Override
      public Object getPixels(int n) {
        if (n % 50 == 3)
          IJ.setKeyDown(KeyEvent.VK_ESCAPE);
        return super.getPixels(n);
      }
    });
    assertEquals(former, IjCommand.run(interrupted, OPTIONS + " stack"));
    assertNull(interrupted.getRoi());
    assertNull(interrupted.getOverlay());
    assertFalse(interrupted.isLocked());
    IJ.resetEscape();
  }

  @Test
  void escapeEndsTheSearchWithinASlice() throws Exception {
    ByteProcessor ip = new ByteProcessor(1500, 1500);
    ip.setValue(200);
    for (int i = 0; i < 400; i++) ip.fillOval(30 + i % 20 * 70, 30 + i / 20 * 70, 41, 41);
    List<String> former = IjCommand.run(stack(2), OPTIONS);
    for (String command : List.of(IjCommand.NAME, IjCommand.FIND, IjCommand.SEGMENT)) {
      ImagePlus image = new ImagePlus("escape", ip);
      Thread key = new Thread(() -> {
        while (!Thread.currentThread().isInterrupted()) IJ.setKeyDown(KeyEvent.VK_ESCAPE);
      });
      key.start();
      IJ.run(image, command, command.equals(IjCommand.NAME) ? "max_radius=30" : "radius=0");
      key.interrupt();
      key.join();
      IJ.resetEscape();
      assertEquals(former, IjCommand.rows());
      assertNull(image.getRoi());
      assertNull(image.getOverlay());
      assertFalse(image.isLocked());
    }
  }

  /** Makes its slices when they are asked for, as a stack on a disk does. */
  private static class OnDemand extends VirtualStack {
    private final int slices;

    OnDemand(int slices) {
      super(120, 70, null, "");
      this.slices = slices;
    }

    @Override
    public int getSize() {
      return slices;
    }

    @Override
    public int size() {
      return slices;
    }

    @Override
    public ImageProcessor getProcessor(int n) {
      return slice(n);
    }

    @Override
    public Object getPixels(int n) {
      return getProcessor(n).getPixels();
    }

    @Override
    public String getSliceLabel(int n) {
      return "slice " + n;
    }
  }
}
