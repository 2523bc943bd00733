import ij.Executer;
import ij.IJ;
import ij.ImageJ;
import ij.ImagePlus;
import ij.WindowManager;
import ij.gui.GenericDialog;
import ij.gui.ImageCanvas;
import ij.gui.ImageWindow;
import ij.gui.Roi;
import ij.plugin.filter.Analyzer;
import ij.process.FloatPolygon;
import java.awt.Color;
import java.awt.EventQueue;
import java.awt.Frame;
import java.awt.Point;
import java.awt.Rectangle;
import java.awt.Robot;
import java.awt.Toolkit;
import java.awt.Window;
import java.awt.geom.Point2D;
import java.awt.geom.Rectangle2D;
import java.awt.image.BufferedImage;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.function.Function;
import javax.imageio.ImageIO;

/**
 * Takes a picture of ImageJ after a search, with the dialog open for the next one: find|segment
 * FILE.
 */
final class IjScreenshot {
  private static final int GAP = 16;

  private IjScreenshot() {}

  public static void main(String[] arguments) throws Exception {
    Path home = IjScreen.install();
    IjScreen.start(home);
    Path file = Path.of(arguments[1]);
    if (arguments[0].equals("segment")) {
      takeRegions(file);
    } else {
      takeCircles(file);
    }
    IjScreen.remove(home);
    System.exit(0); // ImageJ and its dialog are open
  }

  /** Of Find Objects. The result is where the picture shows a point of each circle. */
  static List<Point> takeCircles(Path file) throws Exception {
    ImageJ imagej = IJ.getInstance();
    ImagePlus image = IjCommand.open("dsb_large_a");
    image.show();
    ImageWindow window = image.getWindow();
    IjScreen.press(dialog(IjCommand.FIND, image).getButtons()[0]);
    IjScreen.await("the circles", () -> image.getOverlay() != null && !image.isLocked());
    Frame table = (Frame) IjScreen.await("the table", () -> WindowManager.getWindow("Results"));

    GenericDialog dialog = dialog(IjCommand.FIND, image);
    int right = GAP + window.getWidth() + GAP;
    place(imagej, GAP, GAP);
    int below = GAP + imagej.getHeight() + GAP;
    place(window, GAP, below);
    place(dialog, right, GAP);
    place(table, right, GAP + dialog.getHeight() + GAP);
    EventQueue.invokeAndWait(() -> table.setSize(380, below + window.getHeight() - table.getY()));
    write(file, right + 380 + GAP, below + window.getHeight() + GAP);
    return marks(image, roi -> {
      Rectangle2D.Double box = roi.getFloatBounds();
      // The leftmost point, or the rightmost if that is outside the image.
      return new Point2D.Double(box.x < 0 ? box.x + box.width : box.x, box.getCenterY());
    });
  }

  /** Of Segment Objects. The result is where the picture shows a point of each outline. */
  static List<Point> takeRegions(Path file) throws Exception {
    ImageJ imagej = IJ.getInstance();
    ImagePlus image = IjCommand.open("dsb_large_a");
    image.show();
    GenericDialog first = dialog(IjCommand.SEGMENT, image);
    IjScreen.tick(IjScreen.box(first, "Add to ROI manager"), false);
    IjScreen.press(first.getButtons()[0]);
    ImagePlus labels =
        IjScreen.await("the labels", () -> WindowManager.getImage("Labels of " + image.getTitle()));
    IjScreen.await("the end of the command", () -> !image.isLocked());
    Frame table = (Frame) IjScreen.await("the table", () -> WindowManager.getWindow("Results"));

    for (ImagePlus shown : List.of(image, labels, image, labels)) // to a half in two steps
      EventQueue.invokeAndWait(() -> shown.getCanvas().zoomOut(0, 0));
    GenericDialog dialog = dialog(IjCommand.SEGMENT, image);
    place(imagej, GAP, GAP);
    int below = GAP + imagej.getHeight() + GAP;
    place(image.getWindow(), GAP, below);
    int middle = GAP + image.getWindow().getWidth() + GAP;
    place(labels.getWindow(), middle, below);
    int right = middle + labels.getWindow().getWidth() + GAP;
    place(dialog, right, GAP);
    int width = right + dialog.getWidth() - GAP;
    int bottom = Math.max(below + image.getWindow().getHeight(), GAP + dialog.getHeight()) + GAP;
    place(table, GAP, bottom);
    EventQueue.invokeAndWait(() -> table.setSize(width, 180));
    write(file, GAP + width + GAP, bottom + 180 + GAP);
    return marks(image, roi -> {
      FloatPolygon outline = roi.getFloatPolygon();
      return new Point2D.Double(outline.xpoints[0], outline.ypoints[0]);
    });
  }

  private static GenericDialog dialog(String command, ImagePlus image) throws Exception {
    Analyzer.setUnsavedMeasurements(false);
    new Executer(command, image);
    return IjScreen.dialog();
  }

  /** The left top part of the screen. */
  private static void write(Path file, int width, int height) throws Exception {
    Window backdrop = backdrop();
    Rectangle part = new Rectangle(width, height)
                         .intersection(new Rectangle(Toolkit.getDefaultToolkit().getScreenSize()));
    try {
      ImageIO.write(settled(part), "png", file.toFile());
    } finally {
      EventQueue.invokeAndWait(backdrop::dispose);
    }
  }

  /** A plain desktop. */
  private static Window backdrop() throws Exception {
    Window[] made = new Window[1];
    EventQueue.invokeAndWait(() -> {
      made[0] = new Window((Frame) null);
      made[0].setBackground(new Color(0xB8C4D0));
      made[0].setBounds(new Rectangle(Toolkit.getDefaultToolkit().getScreenSize()));
      made[0].setFocusableWindowState(false);
      made[0].setVisible(true);
      made[0].toBack();
    });
    return made[0];
  }

  private static void place(Window window, int x, int y) throws Exception {
    EventQueue.invokeAndWait(() -> window.setLocation(x, y));
    IjScreen.await("the window at its place", () -> window.getX() == x && window.getY() == y);
  }

  /** Where the screen shows a point of each element of the overlay. */
  private static List<Point> marks(ImagePlus image, Function<Roi, Point2D.Double> point) {
    ImageCanvas canvas = image.getCanvas();
    Point corner = canvas.getLocationOnScreen();
    return Arrays.stream(image.getOverlay().toArray())
        .map(point)
        .map(p -> new Point(corner.x + canvas.screenXD(p.x), corner.y + canvas.screenYD(p.y)))
        .toList();
  }

  /** The screen when it no longer changes. */
  private static BufferedImage settled(Rectangle part) throws Exception {
    Robot robot = new Robot();
    BufferedImage[] last = {robot.createScreenCapture(part)};
    int[] same = {0};
    IjScreen.await("a screen that rests", () -> {
      robot.delay(100);
      BufferedImage next = robot.createScreenCapture(part);
      same[0] = Arrays.equals(pixels(last[0]), pixels(next)) ? same[0] + 1 : 0;
      last[0] = next;
      return same[0] >= 5;
    });
    return last[0];
  }

  private static int[] pixels(BufferedImage image) {
    return image.getRGB(0, 0, image.getWidth(), image.getHeight(), null, 0, image.getWidth());
  }
}
