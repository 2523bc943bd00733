import static org.junit.jupiter.api.Assertions.assertTrue;

import ij.IJ;
import ij.ImageJ;
import ij.ImagePlus;
import ij.gui.GenericDialog;
import ij.plugin.frame.Recorder;
import java.awt.Button;
import java.awt.Checkbox;
import java.awt.Choice;
import java.awt.EventQueue;
import java.awt.TextField;
import java.awt.Window;
import java.awt.event.ActionEvent;
import java.awt.event.ItemEvent;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Comparator;
import java.util.List;
import java.util.function.BooleanSupplier;
import java.util.function.Supplier;
import java.util.stream.IntStream;
import java.util.stream.Stream;
import javax.swing.JLabel;

/**
 * ImageJ on a screen, with the jar among its plugins and its preferences in a folder of its own.
 */
final class IjScreen {
  private static final long PATIENCE_MS = 60_000;
  private static final List<String> TITLES =
      List.of("Circular Voting", "Find Objects", "Segment Objects");

  private IjScreen() {}

  /** Makes ImageJ's folder with the jar in it. */
  static Path install() throws IOException {
    Path home = Files.createTempDirectory("orva-imagej-");
    Path plugins = Files.createDirectory(home.resolve("plugins"));
    Files.copy(Path.of(System.getProperty("orva.jar")), plugins.resolve("orva_imagej.jar"));
    return home;
  }

  static void remove(Path home) throws IOException {
    try (Stream<Path> paths = Files.walk(home)) {
      for (Path path : paths.sorted(Comparator.reverseOrder()).toList()) Files.delete(path);
    }
  }

  static ImageJ start(Path home) {
    System.setProperty("user.home", home.toString());
    System.setProperty("plugins.dir", home.toString());
    return new ImageJ();
  }

  static void await(String what, BooleanSupplier condition) throws InterruptedException {
    await(what, () -> condition.getAsBoolean() ? true : null);
  }

  /** Waits for a value that is not null. */
  static <T> T await(String what, Supplier<T> source) throws InterruptedException {
    long end = System.currentTimeMillis() + PATIENCE_MS;
    T value = source.get();
    while (value == null && System.currentTimeMillis() < end) {
      Thread.sleep(20);
      value = source.get();
    }
    assertTrue(value != null, "waited in vain: " + what);
    return value;
  }

  /** An open dialog that a thread waits for: one that ends sooner would be waited for forever. */
  static GenericDialog dialog() throws InterruptedException {
    return await("the dialog", () -> isWaitedFor() ? openDialog() : null);
  }

  private static boolean isWaitedFor() {
    return Thread.getAllStackTraces().values().stream().anyMatch(
        frames -> Arrays.stream(frames).skip(1).anyMatch(IjScreen::isWaiting));
  }

  private static boolean isWaiting(StackTraceElement frame) {
    return frame.getClassName().equals("java.awt.WaitDispatchSupport")
        && frame.getMethodName().equals("enter");
  }

  static GenericDialog openDialog() {
    for (Window window : Window.getWindows()) {
      if (window instanceof GenericDialog dialog && dialog.isShowing()
          && TITLES.contains(dialog.getTitle()) && dialog.getButtons()[0] != null)
        return dialog;
    }
    return null;
  }

  static void type(GenericDialog dialog, int field, String text) throws Exception {
    EventQueue.invokeAndWait(
        () -> ((TextField) dialog.getNumericFields().get(field)).setText(text));
  }

  /** Into the first field for text. */
  static void typeText(GenericDialog dialog, String text) throws Exception {
    EventQueue.invokeAndWait(() -> textField(dialog).setText(text));
  }

  static TextField textField(GenericDialog dialog) {
    return (TextField) dialog.getStringFields().get(0);
  }

  /** What the fields for numbers hold. */
  static List<String> texts(GenericDialog dialog) {
    List<String> texts = new ArrayList<>();
    for (Object field : dialog.getNumericFields()) texts.add(((TextField) field).getText());
    return texts;
  }

  static List<String> boxes(GenericDialog dialog) {
    List<String> labels = new ArrayList<>();
    for (Object box : dialog.getCheckboxes()) labels.add(((Checkbox) box).getLabel());
    return labels;
  }

  static Checkbox box(GenericDialog dialog, String start) {
    return (Checkbox) dialog.getCheckboxes().get(
        IntStream.range(0, dialog.getCheckboxes().size())
            .filter(i -> boxes(dialog).get(i).startsWith(start))
            .findFirst()
            .orElseThrow());
  }

  static void choose(GenericDialog dialog, String item) throws Exception {
    Choice choice = (Choice) dialog.getChoices().get(0);
    EventQueue.invokeAndWait(() -> {
      choice.select(item);
      choice.dispatchEvent(
          new ItemEvent(choice, ItemEvent.ITEM_STATE_CHANGED, item, ItemEvent.SELECTED));
    });
  }

  static void tick(Checkbox box, boolean on) throws Exception {
    EventQueue.invokeAndWait(() -> {
      box.setState(on);
      box.dispatchEvent(new ItemEvent(
          box, ItemEvent.ITEM_STATE_CHANGED, box, on ? ItemEvent.SELECTED : ItemEvent.DESELECTED));
    });
  }

  static void press(Button button) throws Exception {
    EventQueue.invokeAndWait(
        () -> button.dispatchEvent(new ActionEvent(button, ActionEvent.ACTION_PERFORMED, "")));
  }

  /** Presses a button of the dialog of a command that searches the image. */
  static void finish(ImagePlus image, Button button) throws Exception {
    press(button);
    await("the end of the command", () -> !image.isLocked());
  }

  static void awaitStatus(String start) throws Exception {
    await(start + " instead of " + status(), () -> status().startsWith(start));
  }

  static void awaitStatusEnd(String end) throws Exception {
    await(end + " instead of " + status(), () -> status().endsWith(end));
  }

  private static String status() {
    return Arrays.stream(IJ.getInstance().getStatusBar().getComponents())
        .filter(JLabel.class ::isInstance)
        .map(label -> ((JLabel) label).getText())
        .findFirst()
        .orElseThrow();
  }

  static void awaitRecord(Recorder recorder, String command, String options) throws Exception {
    String line = "run(\"" + command + "\", \"" + options + "\");";
    await(line + " in " + recorder.getText(),
        () -> recorder.getText().lines().anyMatch(line::equals));
  }

  static void closeImages() {
    IJ.runMacro("close('*'); run('Clear Results');");
  }
}
