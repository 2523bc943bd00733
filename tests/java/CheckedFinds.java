import orva.FindSettings;
import orva.Objects;
import orva.SegmentSettings;

/** Searches for objects; for a Java machine that checks the native calls. */
final class CheckedFinds {
  private CheckedFinds() {}

  public static void main(String[] arguments) {
    int found = 0;
    for (int side : new int[] {0, 1, 40, 64}) {
      Pgm image = Pgm.black(side, side).with(side / 2, side / 2, 6);
      found += Objects.find(image.grays(), side, side, new FindSettings()).objects().size();
      Objects.estimate(image.grays(), side, side);
      Objects.segment(image.grays(), side, side, new FindSettings(), new SegmentSettings());
    }
    System.out.println(found + " objects");
  }
}
