package orva.imagej;

import ij.ImagePlus;
import ij.ImageStack;
import ij.gui.Roi;
import ij.measure.Calibration;
import ij.plugin.filter.ThresholdToSelection;
import ij.process.ByteProcessor;
import ij.process.FloatProcessor;
import ij.process.ImageProcessor;
import ij.process.ShortProcessor;
import java.util.List;
import java.util.SortedMap;
import orva.SegmentedObject;

/**
 * The regions of some objects in a label image.
 *
 * @param labels row by row, 0 for the background
 * @param width number of columns
 * @param objects in the order of their labels; not necessarily all
 */
record LabelImage(int[] labels, int width, List<SegmentedObject> objects) {
  private static final int MAX_16_BITS = 65535;

  /** The outline along the sides of the region's pixels; of several parts if it has holes. */
  Roi outline(SegmentedObject o) {
    ByteProcessor mask = new ByteProcessor(o.endColumn() - o.minColumn(), o.endRow() - o.minRow());
    for (int y = 0; y < mask.getHeight(); y++) {
      int row = (o.minRow() + y) * width + o.minColumn();
      for (int x = 0; x < mask.getWidth(); x++) {
        if (labels[row + x] == o.label())
          mask.set(x, y, 255);
      }
    }
    mask.setThreshold(255, 255, ImageProcessor.NO_LUT_UPDATE);
    Roi outline = new ThresholdToSelection().convert(mask);
    outline.setLocation(o.minColumn(), o.minRow());
    return outline;
  }

  /**
   * The label image of these objects alone, numbered from 1 in their order: of 16 bits if that is
   * enough, else of 32. The latter, of floats, holds labels up to 2^24 exactly.
   */
  ImageProcessor renumbered() {
    int max = objects.isEmpty() ? 0 : objects.get(objects.size() - 1).label();
    int[] numbers = new int[max + 1];
    int n = 0;
    for (SegmentedObject o : objects) numbers[o.label()] = ++n;
    int height = width == 0 ? 0 : labels.length / width;
    ImageProcessor ip =
        n <= MAX_16_BITS ? new ShortProcessor(width, height) : new FloatProcessor(width, height);
    for (int i = 0; i < labels.length; i++) {
      if (labels[i] <= max)
        ip.setf(i, numbers[labels[i]]);
    }
    return ip;
  }

  /** The label images of slices of an image as one image, of 32 bits if one of them needs it. */
  static ImagePlus of(ImagePlus source, SortedMap<Integer, Detection> slices) {
    int max = slices.values().stream().mapToInt(d -> d.objects().size()).max().orElse(0);
    ImageStack stack = new ImageStack(source.getWidth(), source.getHeight());
    slices.forEach((slice, d)
                       -> stack.addSlice(source.getStack().getSliceLabel(slice),
                           max <= MAX_16_BITS ? d.labels() : d.labels().convertToFloatProcessor()));
    ImagePlus image = new ImagePlus("Labels of " + source.getTitle(), stack);
    if (stack.size() == source.getStackSize()) {
      image.setDimensions(source.getNChannels(), source.getNSlices(), source.getNFrames());
      image.setOpenAsHyperStack(source.isHyperStack());
    }
    Calibration calibration = source.getCalibration().copy();
    calibration.disableDensityCalibration(); // labels are no gray values
    image.setCalibration(calibration);
    image.setDisplayRange(0, Math.max(1, max));
    return image;
  }
}
