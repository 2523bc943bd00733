package orva.imagej;

import ij.CompositeImage;
import ij.ImagePlus;
import ij.process.ByteProcessor;
import ij.process.ColorProcessor;
import ij.process.ImageProcessor;
import ij.process.LUT;

/** The gray values of a slice of an image. */
final class GrayValues {
  private final ImagePlus imp;

  GrayValues(ImagePlus imp) {
    this.imp = imp;
  }

  /** The values as they are stored; of colors the gray values. */
  float[] stored(ImageProcessor ip) {
    ImageProcessor gray = isColor(ip) ? asGray(ip) : ip;
    float[] values = new float[gray.getPixelCount()];
    for (int i = 0; i < values.length; i++) values[i] = gray.getf(i);
    return values;
  }

  /** Whether an inverting color table shows the stored values the other way round. */
  boolean areInverted(ImageProcessor ip) {
    return imp.isInvertedLut() && !isColorMap(ip);
  }

  /** The values of 8 bits by the display range; bright objects are bright in them. */
  int[] shown(ImageProcessor ip, int slice, boolean dark) {
    int flip = dark != areInverted(ip) ? 0xFF : 0;
    byte[] bytes = (byte[]) asGray(ip, slice).getPixels();
    int[] values = new int[bytes.length];
    for (int i = 0; i < values.length; i++) values[i] = (bytes[i] & 0xFF) ^ flip;
    return values;
  }

  private ImageProcessor asGray(ImageProcessor ip, int slice) {
    if (isColor(ip) || ip instanceof ByteProcessor)
      return asGray(ip);
    ImageProcessor shown = ip.duplicate();
    setDisplayRange(shown, slice);
    return asGray(shown);
  }

  private ImageProcessor asGray(ImageProcessor ip) {
    return (isColorMap(ip) ? ip.convertToRGB() : ip).convertToByteProcessor(true);
  }

  private boolean isColor(ImageProcessor ip) {
    return ip instanceof ColorProcessor || isColorMap(ip);
  }

  /** Whether the pixels name colors. Else a color table only tints their values. */
  private boolean isColorMap(ImageProcessor ip) {
    return ip instanceof ByteProcessor && !imp.isComposite() && ip.isColorLut()
        && !ip.isPseudoColorLut();
  }

  /** Every channel of a composite image has a display range of its own. */
  private void setDisplayRange(ImageProcessor ip, int slice) {
    if (imp instanceof CompositeImage composite) {
      LUT channel = composite.getChannelLut(imp.convertIndexToPosition(slice)[0]);
      ip.setMinAndMax(channel.min, channel.max);
    } else {
      ip.setMinAndMax(imp.getDisplayRangeMin(), imp.getDisplayRangeMax());
    }
  }
}
