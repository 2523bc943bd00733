package orva.imagej;

import ij.gui.OvalRoi;
import ij.process.ImageProcessor;
import java.util.List;
import orva.FindResult;
import orva.FindSettings;
import orva.FoundObject;
import orva.Objects;

/**
 * The ImageJ command Plugins &gt; Orva &gt; Find Objects...: marks round objects of unknown size
 * and brightness in the current slice or in all of a stack. The results are a row of the results
 * table and a circle of the overlay for each object; the status line says what was estimated.
 *
 * <p>A color image counts by its gray values. An area selection limits the objects to those with
 * their center in it.
 */
public final class FindObjectsPlugin extends DetectionPlugin {
  private static FindChoice last = FindChoice.USUAL;

  /** Called by ImageJ. */
  public FindObjectsPlugin() {
    super("Find Objects", "orva objects", List.of("x", "y", "radius", "score"));
  }

  @Override
  FindChoice last() {
    return last;
  }

  @Override
  void remember() {
    last = choice();
  }

  @Override
  Detection search(float[] pixels, ImageProcessor ip, FindSettings settings) {
    FindResult result = Objects.find(pixels, ip.getHeight(), ip.getWidth(), settings);
    return new Detection(result.used(),
        result.objects()
            .stream()
            .filter(o -> isSelected(ip, Math.round(o.x()), Math.round(o.y())))
            .map(FindObjectsPlugin::shown)
            .toList(),
        null);
  }

  private static Detection.Shown shown(FoundObject o) {
    // The centers of ImageJ's pixels are at halves.
    double left = o.x() + 0.5 - o.radius();
    double top = o.y() + 0.5 - o.radius();
    return new Detection.Shown(new OvalRoi(left, top, 2.0 * o.radius(), 2.0 * o.radius()),
        new double[] {o.x(), o.y(), o.radius(), o.score()});
  }
}
