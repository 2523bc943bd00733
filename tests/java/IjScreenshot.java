import ij.Executer;
import ij.IJ;
import ij.ImageJ;
import ij.ImagePlus;
import ij.WindowManager;
import ij.gui.GenericDialog;
import ij.gui.ImageWindow;
import ij.gui.Roi;
import ij.plugin.filter.Analyzer;
import java.awt.Color;
import java.awt.EventQueue;
import java.awt.Frame;
import java.awt.Point;
import java.awt.Rectangle;
import java.awt.Robot;
import java.awt.Toolkit;
import java.awt.Window;
import java.awt.geom.Rectangle2D;
import java.awt.image.BufferedImage;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import javax.imageio.ImageIO;

/** Takes a picture of ImageJ after a search, with the dialog open for the next one: FILE. */
final class IjScreenshot {
  private static final int GAP = 16;

  private IjScreenshot() {}

  public static void main(String[] arguments) throws Exception {
    Path home = IjScreen.install();
    IjScreen.start(home);
    take(Path.of(arguments[0]));
    IjScreen.remove(home);
    System.exit(0); // ImageJ and its dialog are open
  }

  /** Writes the picture. The result is where it shows a point of each circle. */
  static List<Point> take(Path file) throws Exception {
    ImageJ imagej = IJ.getInstance();
    ImagePlus image = IjCommand.open("dsb_large_a");
    image.show();
    ImageWindow window = image.getWindow();
    Analyzer.setUnsavedMeasurements(false);
    new Executer(IjCommand.FIND, image);
    IjScreen.press(IjScreen.dialog().getButtons()[0]);
    IjScreen.await("the circles", () -> image.getOverlay() != null && !image.isLocked());
    Frame table = (Frame) IjScreen.await("the table", () -> WindowManager.getWindow("Results"));

    new Executer(IjCommand.FIND, image);
    GenericDialog dialog = IjScreen.dialog();
    int right = GAP + window.getWidth() + GAP;
    place(imagej, GAP, GAP);
    int below = GAP + imagej.getHeight() + GAP;
    place(window, GAP, below);
    place(dialog, right, GAP);
    place(table, right, GAP + dialog.getHeight() + GAP);
    EventQueue.invokeAndWait(() -> table.setSize(380, below + window.getHeight() - table.getY()));

    Window backdrop = backdrop();

    List<Point> marks =
        Arrays.stream(image.getOverlay().toArray()).map(roi -> onScreen(image, roi)).toList();
    Rectangle part = new Rectangle(0, 0, right + 380 + GAP, below + window.getHeight() + GAP)
                         .intersection(new Rectangle(Toolkit.getDefaultToolkit().getScreenSize()));
    try {
      ImageIO.write(settled(part), "png", file.toFile());
    } finally {
      EventQueue.invokeAndWait(backdrop::dispose);
    }
    return marks;
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

  /** The leftmost point of the circle, or the rightmost if that is outside the image. */
  private static Point onScreen(ImagePlus image, Roi circle) {
    Rectangle2D.Double box = circle.getFloatBounds();
    double x = box.x < 0 ? box.x + box.width : box.x;
    Point corner = image.getCanvas().getLocationOnScreen();
    return new Point(corner.x + image.getCanvas().screenXD(x),
        corner.y + image.getCanvas().screenYD(box.getCenterY()));
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
