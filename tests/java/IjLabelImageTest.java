import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.IJ;
import ij.ImagePlus;
import ij.gui.Roi;
import ij.process.FloatProcessor;
import ij.process.ImageProcessor;
import java.lang.reflect.Constructor;
import java.lang.reflect.Method;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Random;
import java.util.stream.IntStream;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;
import orva.SegmentedObject;

/** Label images with shapes and numbers of objects that the sample images do not have. */
class IjLabelImageTest {
  @TempDir Path folder;

  @BeforeAll
  static void goWithoutScreen() {
    System.setProperty("java.awt.headless", "true");
  }

  /** The class of the plugin, which is not public. */
  private record Plugin(Object image) {
    static Plugin of(int[] labels, int width, List<SegmentedObject> objects) throws Exception {
      Constructor<?> constructor = Class.forName("orva.imagej.LabelImage")
                                       .getDeclaredConstructor(int[].class, int.class, List.class);
      constructor.setAccessible(true);
      return new Plugin(constructor.newInstance(labels, width, objects));
    }

    Roi outline(SegmentedObject o) throws Exception {
      Method method = image.getClass().getDeclaredMethod("outline", SegmentedObject.class);
      method.setAccessible(true);
      return (Roi) method.invoke(image, o);
    }

    ImageProcessor renumbered() throws Exception {
      Method method = image.getClass().getDeclaredMethod("renumbered");
      method.setAccessible(true);
      return (ImageProcessor) method.invoke(image);
    }
  }

  /** The objects of labels, with label, box and area alone. */
  private static List<SegmentedObject> objects(int[] labels, int width) {
    int n = Arrays.stream(labels).max().orElse(0);
    int[] areas = new int[n + 1];
    int[][] boxes = new int[n + 1][];
    for (int i = 0; i < labels.length; i++) {
      int x = i % width;
      int y = i / width;
      int[] b = boxes[labels[i]] == null ? new int[] {y, x, y + 1, x + 1} : boxes[labels[i]];
      boxes[labels[i]] = new int[] {
          Math.min(b[0], y), Math.min(b[1], x), Math.max(b[2], y + 1), Math.max(b[3], x + 1)};
      ++areas[labels[i]];
    }
    List<SegmentedObject> objects = new ArrayList<>();
    for (int k = 1; k <= n; k++)
      objects.add(new SegmentedObject(k, 0, 0, areas[k], 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
          boxes[k][0], boxes[k][1], boxes[k][2], boxes[k][3], 1, false));
    return objects;
  }

  private static int[] labels(String... rows) {
    return String.join("", rows).chars().map(c -> c == '.' ? 0 : c - '0').toArray();
  }

  private static void assertOutlinesEnclose(int[] labels, int width) throws Exception {
    List<SegmentedObject> objects = objects(labels, width);
    Plugin image = Plugin.of(labels, width, objects);
    List<Roi> outlines = new ArrayList<>();
    for (SegmentedObject o : objects) outlines.add(image.outline(o));
    assertArrayEquals(labels, IjRegions.filled(outlines, width, labels.length / width));
  }

  @Test
  void anOutlineEnclosesThePixelsOfItsRegion() throws Exception {
    // A rectangle, a single pixel at a corner, a ring around another region, a diagonal step.
    assertOutlinesEnclose(labels("1100000002", //
                              "1100333330", //
                              "1100344430", //
                              "0000345430", //
                              "6660344430", //
                              "0060333330", //
                              "0066000777", //
                              "0000000700"),
        10);
    assertOutlinesEnclose(labels("1"), 1);
    assertOutlinesEnclose(labels("12", "21"), 2); // touching at their corners
  }

  @Test
  void anOutlineMayHaveAnyShape() throws Exception {
    Random random = new Random(7);
    for (int n = 0; n < 200; n++) {
      int width = 1 + random.nextInt(12);
      int[] labels = new int[width * (1 + random.nextInt(12))];
      for (int i = 0; i < labels.length; i++) labels[i] = 1 + random.nextInt(2);
      labels[0] = 1;
      assertOutlinesEnclose(labels, width);
    }
  }

  @ParameterizedTest
  @ValueSource(ints = {65535, 65536, 90000})
  void moreLabelsThan16BitsHoldHave32Bits(int n) throws Exception {
    int[] labels = IntStream.range(0, 300 * 300).map(i -> i < n ? i + 1 : 0).toArray();
    ImageProcessor ip = Plugin.of(labels, 300, objects(labels, 300)).renumbered();
    assertEquals(n > 65535, ip instanceof FloatProcessor);
    assertArrayEquals(labels, IjRegions.labels(ip));
    String file = folder.resolve("labels.tif").toString();
    IJ.save(new ImagePlus("labels", ip), file);
    ImagePlus read = IJ.openImage(file);
    assertEquals(n > 65535 ? 32 : 16, read.getBitDepth());
    assertArrayEquals(labels, IjRegions.labels(read.getProcessor()));
  }

  @Test
  void theLabelsOfFewerObjectsHaveNoGaps() throws Exception {
    int[] labels = labels("1223", "1443", "5443");
    List<SegmentedObject> all = objects(labels, 4);
    assertArrayEquals(labels("...1", ".221", ".221"),
        IjRegions.labels(Plugin.of(labels, 4, List.of(all.get(2), all.get(3))).renumbered()));
    assertArrayEquals(new int[12], IjRegions.labels(Plugin.of(labels, 4, List.of()).renumbered()));
    assertTrue(Arrays.stream(labels).max().getAsInt() == all.size());
  }
}
