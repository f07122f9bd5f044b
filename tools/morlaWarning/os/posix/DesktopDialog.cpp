// The window, made with GTK 3.
//
// GTK ends its process with exit code 1 when the display goes away. So the window belongs to a
// child process, which tells the answer through a pipe: a child that ends without an answer chose
// nothing.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtk/gtk.h>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tools/morlaWarning/Dialog.h"

namespace morlawarning {

namespace {

constexpr int kNoDisplay = -1;

// Sizes in pixels.
constexpr int kMargin = 16;
constexpr int kIcon = 48;
constexpr int kNarrowestText = 240;
constexpr int kWidestText = 640;

struct Size {
  int width;
  int height;
};

// The space that the texts and the buttons may take on the user's screen.
Size spaceOnScreen() {
  GdkDisplay* display = gdk_display_get_default();
  GdkMonitor* monitor = gdk_display_get_primary_monitor(display);
  if (monitor == nullptr) monitor = gdk_display_get_monitor(display, 0);
  GdkRectangle area = {0, 0, 800, 600};
  if (monitor != nullptr) gdk_monitor_get_workarea(monitor, &area);
  return {std::min(kWidestText, area.width * 3 / 4), area.height * 3 / 4};
}

// The number of bytes of a UTF-8 text that fill any screen.
std::size_t screenful(std::string_view text) {
  std::size_t length = std::min<std::size_t>(text.size(), 50000);
  while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
    --length;
  return length;
}

// The size that a text takes when lines are at most `width` wide.
Size measure(GtkWidget* widget, std::string_view text, int width) {
  PangoLayout* layout = gtk_widget_create_pango_layout(widget, nullptr);
  const std::string shown(text.substr(0, screenful(text)));
  pango_layout_set_text(layout, shown.c_str(), static_cast<int>(shown.size()));
  pango_layout_set_width(layout, width * PANGO_SCALE);
  pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
  Size size;
  pango_layout_get_pixel_size(layout, &size.width, &size.height);
  g_object_unref(layout);
  return size;
}

// Texts stand on the colour of the window.
void setStyle() {
  GtkCssProvider* css = gtk_css_provider_new();
  gtk_css_provider_load_from_data(css, "textview, textview text { background: transparent; }", -1,
                                  nullptr);
  gtk_style_context_add_provider_for_screen(gdk_screen_get_default(), GTK_STYLE_PROVIDER(css),
                                            GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  g_object_unref(css);
}

// Scrolls up and down when `child` is higher than its room.
GtkWidget* scrollerFor(GtkWidget* child) {
  GtkWidget* scroller = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER,
                                 GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(scroller), FALSE);
  gtk_container_add(GTK_CONTAINER(scroller), child);
  return scroller;
}

// The window and what happens to it.
class Window {
 public:
  explicit Window(const Warning& warning)
      : window_(gtk_window_new(GTK_WINDOW_TOPLEVEL)), space_(spaceOnScreen()) {
    GtkWidget* grid = gtk_box_new(GTK_ORIENTATION_VERTICAL, kMargin);
    GtkWidget* upper = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, kMargin);
    GtkWidget* icon = gtk_image_new_from_icon_name("dialog-warning", GTK_ICON_SIZE_DIALOG);
    gtk_widget_set_valign(icon, GTK_ALIGN_START);
    gtk_box_pack_start(GTK_BOX(upper), icon, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(upper), texts(warning), TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(grid), upper, TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(grid), buttons(warning), FALSE, FALSE, 0);
    gtk_container_set_border_width(GTK_CONTAINER(window_), kMargin);
    gtk_container_add(GTK_CONTAINER(window_), grid);
    present(warning.title);
  }

  int waitForAnswer() {
    gtk_main();
    return answer_;
  }

 private:
  // One text to scroll, read and copy: the message, and the further text below in smaller letters.
  GtkWidget* texts(const Warning& warning) {
    GtkWidget* view = gtk_text_view_new();
    gtk_text_view_set_editable(GTK_TEXT_VIEW(view), FALSE);
    gtk_text_view_set_cursor_visible(GTK_TEXT_VIEW(view), FALSE);
    gtk_text_view_set_accepts_tab(GTK_TEXT_VIEW(view), FALSE);
    gtk_text_view_set_wrap_mode(GTK_TEXT_VIEW(view), GTK_WRAP_WORD_CHAR);

    std::string message = warning.message;
    if (message.ends_with('\n')) message.pop_back();
    if (!message.empty() && !warning.extra.empty()) message += "\n\n";
    GtkTextBuffer* buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(view));
    gtk_text_buffer_create_tag(buffer, "extra", "scale", 0.9, nullptr);
    GtkTextIter end;
    gtk_text_buffer_get_end_iter(buffer, &end);
    gtk_text_buffer_insert(buffer, &end, message.data(), static_cast<int>(message.size()));
    gtk_text_buffer_insert_with_tags_by_name(buffer, &end, warning.extra.data(),
                                             static_cast<int>(warning.extra.size()), "extra",
                                             nullptr);
    const Size size = measure(view, message + warning.extra, space_.width);
    gtk_text_view_set_top_margin(GTK_TEXT_VIEW(view), std::max(0, (kIcon - size.height) / 2));
    scroller_ = scrollerFor(view);
    gtk_widget_set_size_request(scroller_, std::max(kNarrowestText, size.width + 2 * kMargin),
                                std::min(size.height, space_.height * 2 / 3));
    return scroller_;
  }

  // Buttons that are too wide for one row stand in a column, which scrolls when it is too high.
  GtkWidget* buttons(const Warning& warning) {
    GtkWidget* box = gtk_button_box_new(GTK_ORIENTATION_HORIZONTAL);
    gtk_button_box_set_layout(GTK_BUTTON_BOX(box), GTK_BUTTONBOX_EXPAND);
    for (const std::string& label : warning.buttons) addButton(box, label);
    gtk_widget_show_all(box);
    int width = 0;
    gtk_widget_get_preferred_width(box, nullptr, &width);
    if (width > space_.width) stackUp(box);

    GtkWidget* scroller = scrollerFor(box);
    gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(scroller), TRUE);
    gtk_scrolled_window_set_max_content_height(GTK_SCROLLED_WINDOW(scroller), space_.height / 3);
    GtkAdjustment* position = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scroller));
    gtk_container_set_focus_vadjustment(GTK_CONTAINER(box), position);
    return scroller;
  }

  void addButton(GtkWidget* box, const std::string& label) {
    GtkWidget* button = gtk_button_new_with_label(label.c_str());
    gtk_widget_set_can_default(button, TRUE);
    g_signal_connect(button, "clicked", G_CALLBACK(onClicked), this);
    gtk_container_add(GTK_CONTAINER(box), button);
    buttons_.push_back(button);
  }

  void stackUp(GtkWidget* box) {
    gtk_orientable_set_orientation(GTK_ORIENTABLE(box), GTK_ORIENTATION_VERTICAL);
    for (GtkWidget* button : buttons_) {
      auto* label = GTK_LABEL(gtk_bin_get_child(GTK_BIN(button)));
      gtk_label_set_line_wrap(label, TRUE);
      gtk_label_set_line_wrap_mode(label, PANGO_WRAP_WORD_CHAR);
      gtk_label_set_max_width_chars(label, 60);
    }
  }

  void present(const std::string& title) {
    gtk_window_set_title(GTK_WINDOW(window_), title.c_str());
    gtk_window_set_icon_name(GTK_WINDOW(window_), "dialog-warning");
    gtk_window_set_type_hint(GTK_WINDOW(window_), GDK_WINDOW_TYPE_HINT_DIALOG);
    gtk_window_set_position(GTK_WINDOW(window_), GTK_WIN_POS_CENTER);
    gtk_window_set_keep_above(GTK_WINDOW(window_), TRUE);
    g_signal_connect(window_, "key-press-event", G_CALLBACK(onKey), this);
    g_signal_connect(window_, "delete-event", G_CALLBACK(gtk_main_quit), nullptr);
    gtk_style_context_add_class(gtk_widget_get_style_context(buttons_.front()),
                                GTK_STYLE_CLASS_SUGGESTED_ACTION);
    gtk_widget_grab_default(buttons_.front());
    gtk_widget_grab_focus(buttons_.front());
    gtk_widget_show_all(window_);
    gtk_window_present(GTK_WINDOW(window_));
  }

  static void onClicked(GtkWidget* button, Window* window) {
    const auto& all = window->buttons_;
    window->answer_ = static_cast<int>(std::find(all.begin(), all.end(), button) - all.begin()) + 1;
    gtk_main_quit();
  }

  // Escape closes the window. The text scrolls while a button has the keyboard, too.
  static gboolean onKey(GtkWidget*, GdkEventKey* event, Window* window) {
    gboolean isDone = FALSE;
    if (event->keyval == GDK_KEY_Page_Down || event->keyval == GDK_KEY_Page_Up) {
      const GtkScrollType step =
          event->keyval == GDK_KEY_Page_Down ? GTK_SCROLL_PAGE_DOWN : GTK_SCROLL_PAGE_UP;
      g_signal_emit_by_name(window->scroller_, "scroll-child", step, FALSE, &isDone);
    }
    if (event->keyval == GDK_KEY_Escape) {
      gtk_main_quit();
      isDone = TRUE;
    }
    return isDone;
  }

  GtkWidget* window_;
  Size space_;
  GtkWidget* scroller_ = nullptr;
  std::vector<GtkWidget*> buttons_;
  int answer_ = kNoButton;
};

int answerOfWindow(const Warning& warning) {
  if (gtk_init_check(nullptr, nullptr) == FALSE) return kNoDisplay;
  setStyle();
  return Window(warning).waitForAnswer();
}

// The child: shows the window and tells the answer. Ends with its parent, and with an exception.
[[noreturn]] void showAndTell(const Warning& warning, int pipe, pid_t parent) noexcept {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) _exit(kNoButton);
  const int answer = answerOfWindow(warning);
  const ssize_t count = write(pipe, &answer, sizeof answer);
  _exit(count == sizeof answer ? 0 : 1);
}

// What the child tells; kNoButton when it ends without a word.
int receiveAnswer(int pipe) {
  int answer = kNoButton;
  ssize_t count;
  do {
    count = read(pipe, &answer, sizeof answer);
  } while (count < 0 && errno == EINTR);
  return count == sizeof answer ? answer : kNoButton;
}

}  // namespace

std::optional<int> showOnDesktop(const Warning& warning) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
  const pid_t self = getpid();
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    showAndTell(warning, ends[1], self);
  }
  close(ends[1]);
  const int answer = child > 0 ? receiveAnswer(ends[0]) : kNoDisplay;
  close(ends[0]);
  if (child > 0) waitpid(child, nullptr, 0);
  if (answer == kNoDisplay) return std::nullopt;
  return answer;
}

}  // namespace morlawarning
